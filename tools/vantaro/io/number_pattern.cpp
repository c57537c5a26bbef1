#include "io/number_pattern.h"

#include "io/file.h"

namespace vantaro::tool {

namespace {

// Length of the field starting at name[at] == '%' ("%04d" is 4), or 0 when
// it is not a number field.
size_t field_length(const std::string& name, size_t at) {
    size_t i = at + 1;
    while (i < name.size() && name[i] >= '0' && name[i] <= '9') ++i;
    return i < name.size() && name[i] == 'd' && i - at <= 4 ? i - at + 1 : 0;
}

}  // namespace

bool NumberPattern::is_pattern(const std::string& name) {
    for (size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '%') continue;
        if (i + 1 < name.size() && name[i + 1] == '%') {
            ++i;
            continue;
        }
        if (field_length(name, i)) return true;
    }
    return false;
}

NumberPattern::NumberPattern(const std::string& name) {
    bool found = false;
    for (size_t i = 0; i < name.size(); ++i) {
        std::string& text = found ? suffix_ : prefix_;
        if (name[i] != '%') {
            text.push_back(name[i]);
            continue;
        }
        if (i + 1 < name.size() && name[i + 1] == '%') {
            text.push_back('%');
            ++i;
            continue;
        }
        const size_t n = field_length(name, i);
        if (!n || found)
            throw UserError(name + ": a numbered name takes one field such as %d or %04d (write %% for a percent sign)");
        found = true;
        zeros_ = name[i + 1] == '0';
        width_ = n > 2 ? std::stoi(name.substr(i + 1, n - 2)) : 0;
        i += n - 1;
    }
    if (!found) throw UserError(name + ": no number field such as %d or %04d");
}

std::string NumberPattern::name(uint64_t n) const {
    std::string digits = std::to_string(n);
    if (digits.size() < size_t(width_)) digits.insert(0, size_t(width_) - digits.size(), zeros_ ? '0' : ' ');
    return prefix_ + digits + suffix_;
}

}  // namespace vantaro::tool

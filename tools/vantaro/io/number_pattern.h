// File names with one printf-style number field (%d, %4d, %04d; "%%" is a
// plain percent sign): a numbered picture sequence, in or out.
#pragma once

#include <cstdint>
#include <string>

namespace vantaro::tool {

class NumberPattern {
public:
    // True when `name` holds a number field, so it names a sequence.
    static bool is_pattern(const std::string& name);
    // Throws UserError unless `name` holds exactly one well-formed field.
    explicit NumberPattern(const std::string& name);
    std::string name(uint64_t n) const;

private:
    std::string prefix_, suffix_;
    int32_t width_ = 0;
    bool zeros_ = false;
};

}  // namespace vantaro::tool

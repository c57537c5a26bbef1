#include "platform/guid.h"

namespace vantaro {

namespace {

void AppendHex(std::u16string* text, uint32_t value, int digits) {
  static const char kDigits[] = "0123456789ABCDEF";
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text->push_back(static_cast<char16_t>(kDigits[(value >> shift) & 0xF]));
  }
}

}  // namespace

std::u16string GuidToString(const GUID& guid) {
  std::u16string text = u"{";
  AppendHex(&text, guid.Data1, 8);
  text += u'-';
  AppendHex(&text, guid.Data2, 4);
  text += u'-';
  AppendHex(&text, guid.Data3, 4);
  text += u'-';
  for (int i = 0; i < 8; ++i) {
    if (i == 2) text += u'-';
    AppendHex(&text, guid.Data4[i], 2);
  }
  text += u'}';
  return text;
}

}  // namespace vantaro

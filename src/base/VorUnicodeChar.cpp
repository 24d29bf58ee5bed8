#include "base/VorUnicodeChar.h"

#include <ctype.h>
#include <locale.h>
#include <wctype.h>

namespace {

using WideTest = int (*)(wint_t, locale_t);
using ByteTest = int (*)(int);

// Created once and never freed, so that the tests still work in static destructors.
locale_t UnicodeLocale() {
  static const locale_t locale =
      newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  return locale;
}

int IsInClass(char32_t codePoint, WideTest wideTest, ByteTest asciiTest) {
  const locale_t locale = UnicodeLocale();
  if (locale != static_cast<locale_t>(nullptr)) {
    return wideTest(static_cast<wint_t>(codePoint), locale) != 0;
  }
  return codePoint < 0x80 && asciiTest(static_cast<int>(codePoint)) != 0;
}

}  // namespace

int VorUnicodeChar::IsAlnum() const {
  return IsInClass(_codePoint, iswalnum_l, isalnum);
}
int VorUnicodeChar::IsAlpha() const {
  return IsInClass(_codePoint, iswalpha_l, isalpha);
}
int VorUnicodeChar::IsCntrl() const {
  return IsInClass(_codePoint, iswcntrl_l, iscntrl);
}
int VorUnicodeChar::IsDigit() const {
  return IsInClass(_codePoint, iswdigit_l, isdigit);
}
int VorUnicodeChar::IsGraph() const {
  return IsInClass(_codePoint, iswgraph_l, isgraph);
}
int VorUnicodeChar::IsLower() const {
  return IsInClass(_codePoint, iswlower_l, islower);
}
int VorUnicodeChar::IsPrint() const {
  return IsInClass(_codePoint, iswprint_l, isprint);
}
int VorUnicodeChar::IsPunct() const {
  return IsInClass(_codePoint, iswpunct_l, ispunct);
}
int VorUnicodeChar::IsSpace() const {
  return IsInClass(_codePoint, iswspace_l, isspace);
}
int VorUnicodeChar::IsUpper() const {
  return IsInClass(_codePoint, iswupper_l, isupper);
}
int VorUnicodeChar::IsXDigit() const {
  return IsInClass(_codePoint, iswxdigit_l, isxdigit);
}

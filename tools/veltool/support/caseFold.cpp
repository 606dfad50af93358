// Makes small letters: ASCII directly, other characters with the system's UTF-8
// tables.
#include "tools/veltool/support/caseFold.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <locale.h>

namespace veltool {

namespace {

char smallLetter(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isAscii(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}

/// A UTF-8 locale; null if the system does not have one.
locale_t utf8Locale()
{
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

/// Sets the locale of this thread; the destructor restores it.
class LocaleScope
{
public:
    explicit LocaleScope(locale_t locale) : former_(uselocale(locale)) {}
    ~LocaleScope() { uselocale(former_); }
    LocaleScope(const LocaleScope &) = delete;
    LocaleScope &operator=(const LocaleScope &) = delete;

private:
    locale_t former_;
};

std::string foldCharacters(std::string_view text)
{
    const LocaleScope scope(utf8Locale());
    std::string folded;
    std::mbstate_t reading{};
    while (!text.empty()) {
        wchar_t character = 0;
        const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &reading);
        if (length == 0 || length > text.size()) {
            folded += text.front();
            text.remove_prefix(1);
            reading = {};
            continue;
        }
        const std::wint_t small = std::towlower(static_cast<std::wint_t>(character));
        std::string bytes(MB_CUR_MAX, '\0');
        std::mbstate_t writing{};
        bytes.resize(std::wcrtomb(bytes.data(), static_cast<wchar_t>(small), &writing));
        folded += bytes;
        text.remove_prefix(length);
    }
    return folded;
}

} // namespace

std::string foldCase(std::string_view text)
{
    if (!std::all_of(text.begin(), text.end(), isAscii) && utf8Locale() != nullptr) {
        return foldCharacters(text);
    }
    std::string folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), smallLetter);
    return folded;
}

} // namespace veltool

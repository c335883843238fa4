// Text: formatted without regard to the locale, widened and narrowed.
#include "foundation/Status.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <exception>
#include <locale.h>
#include <utility>

namespace Tesk {

namespace {

/// The "C" locale, while it lives: numbers have a decimal point.
class PlainLocale
{
public:
    PlainLocale() : former_(Plain() ? uselocale(Plain()) : nullptr) {}
    ~PlainLocale()
    {
        if (former_) uselocale(former_);
    }
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;

private:
    static locale_t Plain()
    {
        static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
        return plain;
    }

    locale_t former_;
};

/// The arguments, in a type that goes by reference on every machine.
struct Arguments
{
    va_list list;
};

/// One conversion of a format: flags and numbers as they are printed, its length, its letter.
struct Directive
{
    std::wstring flags;
    bool leftAligned = false;
    int width = 0, precision = -1;
    std::wstring length;
    wchar_t letter = 0;
};

/// No field of a message is wider; what asks for more is cut to it.
constexpr int widest = 1024;

int ReadNumber(const wchar_t*& at, Arguments& arguments)
{
    if (*at == L'*') {
        at++;
        return va_arg(arguments.list, int);
    }
    int number = 0;
    for (; *at >= L'0' && *at <= L'9'; at++)
        number = std::min(10 * number + (*at - L'0'), widest);
    return number;
}

Directive ReadDirective(const wchar_t*& at, Arguments& arguments)
{
    Directive directive;
    for (; *at && std::wcschr(L"-+ #0", *at); at++) {
        directive.flags += *at;
        if (*at == L'-') directive.leftAligned = true;
    }
    directive.width = ReadNumber(at, arguments);
    if (directive.width < 0) {
        directive.flags += L'-';
        directive.leftAligned = true;
    }
    directive.width = directive.width == INT_MIN ? widest : std::min(std::abs(directive.width), widest);
    if (*at == L'.') directive.precision = std::min(ReadNumber(++at, arguments), widest);
    for (; *at && std::wcschr(L"hljztL", *at); at++)
        directive.length += *at;
    directive.letter = *at;
    if (*at) at++;
    return directive;
}

template <typename T>
void AppendNumber(std::wstring& text, const Directive& directive, T value)
{
    // "%-+8.3f" with the largest double has 309 digits before its point.
    std::array<wchar_t, 2 * widest + 512> digits;
    std::wstring format = L'%' + directive.flags;
    if (directive.width > 0) format += std::to_wstring(directive.width);
    if (directive.precision >= 0) format += L'.' + std::to_wstring(directive.precision);
    format += directive.length + directive.letter;
    const PlainLocale plain;
    const int length = std::swprintf(digits.data(), digits.size(), format.c_str(), value);
    if (length > 0) text.append(digits.data(), static_cast<std::size_t>(length));
}

void AppendText(std::wstring& text, const Directive& directive, std::wstring value)
{
    if (directive.precision >= 0 && value.size() > static_cast<std::size_t>(directive.precision))
        value.resize(static_cast<std::size_t>(directive.precision));
    const std::size_t width = static_cast<std::size_t>(directive.width);
    const std::wstring fill(width > value.size() ? width - value.size() : 0, L' ');
    text += directive.leftAligned ? value + fill : fill + value;
}

/// A conversion to text. A letter alone takes narrow text, as in every wide format.
void AppendString(std::wstring& text, const Directive& directive, Arguments& arguments)
{
    std::wstring value;
    if (directive.letter == L'S' || directive.length == L"l") {
        const auto* wide = va_arg(arguments.list, const wchar_t*);
        // With a precision the text need not end.
        if (wide)
            value.assign(wide, directive.precision < 0 ? std::wcslen(wide)
                                                       : wcsnlen(wide, static_cast<std::size_t>(directive.precision)));
        else
            value = L"(null)";
    } else {
        const auto* narrow = va_arg(arguments.list, const char*);
        value = narrow ? Widen(narrow) : L"(null)";
    }
    AppendText(text, directive, std::move(value));
}

void AppendCharacter(std::wstring& text, const Directive& directive, Arguments& arguments)
{
    const bool wide = directive.letter == L'C' || directive.length == L"l";
    const auto character = wide ? static_cast<wchar_t>(va_arg(arguments.list, wint_t))
                                : static_cast<wchar_t>(static_cast<unsigned char>(va_arg(arguments.list, int)));
    AppendText(text, directive, std::wstring(1, character));
}

void AppendWhole(std::wstring& text, const Directive& directive, Arguments& arguments)
{
    if (directive.length == L"l")
        AppendNumber(text, directive, va_arg(arguments.list, long));
    else if (directive.length == L"ll" || directive.length == L"j")
        AppendNumber(text, directive, va_arg(arguments.list, long long));
    else if (directive.length == L"z" || directive.length == L"t")
        AppendNumber(text, directive, va_arg(arguments.list, std::ptrdiff_t));
    else
        AppendNumber(text, directive, va_arg(arguments.list, int));
}

} // namespace

std::wstring FormattedText(const wchar_t* Format, va_list List)
{
    Arguments arguments;
    va_copy(arguments.list, List);
    std::wstring text;
    for (const wchar_t* at = Format; *at;) {
        if (*at != L'%') {
            text += *at++;
            continue;
        }
        const Directive directive = ReadDirective(++at, arguments);
        switch (directive.letter) {
        case L'd':
        case L'i':
        case L'u':
        case L'x':
        case L'X':
        case L'o':
            AppendWhole(text, directive, arguments);
            break;
        case L'e':
        case L'E':
        case L'f':
        case L'F':
        case L'g':
        case L'G':
        case L'a':
        case L'A':
            if (directive.length == L"L")
                AppendNumber(text, directive, va_arg(arguments.list, long double));
            else
                AppendNumber(text, directive, va_arg(arguments.list, double));
            break;
        case L's':
        case L'S':
            AppendString(text, directive, arguments);
            break;
        case L'c':
        case L'C':
            AppendCharacter(text, directive, arguments);
            break;
        case L'p':
            AppendNumber(text, directive, va_arg(arguments.list, void*));
            break;
        case L'%':
            text += L'%';
            break;
        default:
            break; // no conversion that messages have
        }
    }
    va_end(arguments.list);
    return text;
}

int FormatArguments(wchar_t* Text, std::size_t Size, const wchar_t* Format, va_list Arguments)
{
    if (Size == 0) return -1;
    *Text = 0;
    try {
        const std::wstring text = FormattedText(Format, Arguments);
        Text[text.copy(Text, Size - 1)] = 0;
        return text.size() < Size ? static_cast<int>(text.size()) : -1;
    } catch (const std::exception&) {
        return -1; // no memory
    }
}

int FormatText(wchar_t* Text, std::size_t Size, const wchar_t* Format, ...)
{
    va_list arguments;
    va_start(arguments, Format);
    const int length = FormatArguments(Text, Size, Format, arguments);
    va_end(arguments);
    return length;
}

namespace {

/// One character of UTF-8; false, and `at` where it was, for what is none.
bool Decode(const unsigned char*& at, std::wstring& wide)
{
    const unsigned char* c = at;
    const int more = *c < 0x80 ? 0 : *c < 0xc2 ? -1 : *c < 0xe0 ? 1 : *c < 0xf0 ? 2 : *c < 0xf5 ? 3 : -1;
    if (more < 0) return false;
    std::uint32_t code = more == 0 ? *c : *c & (0x3fu >> more);
    c++;
    for (int i = 0; i < more; i++, c++) {
        if ((*c & 0xc0) != 0x80) return false;
        code = code << 6 | (*c & 0x3fu);
    }
    constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    if (code < smallest[more] || (code >= 0xd800 && code < 0xe000) || code > 0x10ffff) return false;
    wide.push_back(static_cast<wchar_t>(code));
    at = c;
    return true;
}

std::wstring WidenBytes(const unsigned char* text)
{
    return {text, text + std::strlen(reinterpret_cast<const char*>(text))};
}

} // namespace

std::wstring Widen(const char* Text)
{
    std::wstring wide;
    if (!Text) return wide;
    const auto* bytes = reinterpret_cast<const unsigned char*>(Text);
    for (const auto* at = bytes; *at;)
        if (!Decode(at, wide)) return WidenBytes(bytes);
    return wide;
}

std::string Narrow(const wchar_t* Text)
{
    std::string narrow;
    for (const wchar_t* c = Text; c && *c; c++) {
        auto code = static_cast<std::uint32_t>(*c);
        // What no encoding may hold is shown as such.
        if ((code >= 0xd800 && code < 0xe000) || code > 0x10ffff) code = 0xfffd;
        if (code < 0x80) {
            narrow.push_back(static_cast<char>(code));
        } else if (code < 0x800) {
            narrow.push_back(static_cast<char>(0xc0 | code >> 6));
            narrow.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        } else if (code < 0x10000) {
            narrow.push_back(static_cast<char>(0xe0 | code >> 12));
            narrow.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3f)));
            narrow.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        } else {
            narrow.push_back(static_cast<char>(0xf0 | (code >> 18 & 0x07)));
            narrow.push_back(static_cast<char>(0x80 | (code >> 12 & 0x3f)));
            narrow.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3f)));
            narrow.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        }
    }
    return narrow;
}

} // namespace Tesk

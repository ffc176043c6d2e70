#include "platform_recorder.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <utility>

constexpr std::int32_t kBuiltInLevel = 1;
std::int32_t gDebugLevel = kBuiltInLevel;

namespace {

std::vector<std::u16string> gLines;
std::u16string gSystemDirectory;

std::u16string Widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

// `specifier` is one whole conversion without a length ("%#x"); the platform's long has 32 bits, as int has
// here.
template <typename Number>
std::u16string FormatNumber(const std::string& specifier, Number number) {
    std::array<char, 64> digits{};
    std::snprintf(digits.data(), digits.size(), specifier.c_str(), number);
    return Widen(digits.data());
}

}  // namespace

namespace platform_recorder {

void Reset() {
    gDebugLevel = kBuiltInLevel;
    gLines.clear();
    gSystemDirectory = u"C:\\Windows\\system32";
}

std::vector<std::u16string> TakeLines() {
    return std::exchange(gLines, {});
}

void SetSystemDirectory(std::u16string_view directory) {
    gSystemDirectory = directory;
}

}  // namespace platform_recorder

bool DebugTrace(const Char16* format, ...) noexcept {
    if (format == nullptr) {
        return false;
    }
    std::u16string line;
    std::va_list arguments;
    va_start(arguments, format);
    for (const Char16* at = format; *at != 0; ++at) {
        if (*at != u'%') {
            line += *at;
            continue;
        }
        ++at;
        std::string specifier = "%";
        for (; *at == u'#' || (*at >= u'0' && *at <= u'9'); ++at) {
            specifier += static_cast<char>(*at);
        }
        while (*at == u'l' || *at == u'w') {
            ++at;
        }
        specifier += static_cast<char>(*at);
        switch (*at) {
            case u'd':
                line += FormatNumber(specifier, va_arg(arguments, int));
                break;
            case u'u':
            case u'x':
            case u'X':
                line += FormatNumber(specifier, va_arg(arguments, unsigned));
                break;
            case u'c':
                line += static_cast<Char16>(va_arg(arguments, int));
                break;
            case u's': {
                const Char16* text = va_arg(arguments, const Char16*);
                line += text == nullptr ? u"(null)" : text;
                break;
            }
            case u'%':
                line += u'%';
                break;
            default:
                // What follows would be read with the wrong type.
                ADD_FAILURE() << "unknown conversion " << specifier;
                va_end(arguments);
                return false;
        }
    }
    va_end(arguments);
    gLines.push_back(line.substr(0, kTraceLength));
    return true;
}

void SystemDirectory(Char16 (&path)[kPathLength]) noexcept {
    std::fill(std::begin(path), std::end(path), Char16{0});
    std::copy_n(gSystemDirectory.begin(), std::min(gSystemDirectory.size(), kPathLength - 1), path);
}

#include "base/text.h"

#include <algorithm>

std::size_t CopyText(Char16* field, std::size_t capacity, StringView16 text) noexcept {
    if (capacity == 0) {
        return 0;
    }
    const std::size_t count = std::min(text.size(), capacity - 1);
    std::copy_n(text.data(), count, field);
    std::fill(field + count, field + capacity, Char16{});
    return count;
}

StringView16 FieldText(const Char16* field, std::size_t capacity) noexcept {
    return {field, static_cast<std::size_t>(std::find(field, field + capacity, Char16{}) - field)};
}

String16 NumberText(std::uint64_t number) {
    String16 text;
    do {
        text.push_back(static_cast<Char16>('0' + number % 10));
        number /= 10;
    } while (number != 0);
    std::reverse(text.begin(), text.end());
    return text;
}

#include "language/kept_text.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string>

#include "intrface/win/lock.h"

namespace {

Lock gLock;
std::set<std::wstring, std::less<>> gTexts;

}  // namespace

const wchar_t* KeepText(std::wstring_view text) {
    const LockScope scope(gLock);
    auto found = gTexts.find(text);
    if (found == gTexts.end()) {
        found = gTexts.emplace(text).first;
    }
    return found->c_str();
}

bool IsKeptText(const wchar_t* text) noexcept {
    const LockScope scope(gLock);
    return std::ranges::any_of(gTexts, [text](const std::wstring& kept) { return kept.c_str() == text; });
}

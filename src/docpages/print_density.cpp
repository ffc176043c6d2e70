#include "docpages/print_density.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "base/platform.h"
#include "docpages/option_items.h"
#include "docpages/print_density_texts.h"
#include "language/kept_text.h"

namespace {

constexpr BYTE kOptionLevel = 2;

// What the driver's density values read, in the languages that its own texts and ours come in.
constexpr std::wstring_view kDensityWords[] = {L"Density", L"浓度", L"濃度"};

// A text that the host's items may point at. It stays, since the host may look at its items after the sheet
// has closed.
wchar_t* OwnText(std::wstring_view text) {
    // The host's structures take a writable pointer; it reads texts that it did not allocate.
    return const_cast<wchar_t*>(KeepText(text));
}

bool IsPrintDensity(const OPTITEM& item) {
    if (item.DMPubID != DMPUB_NONE || item.Level != kOptionLevel || !HasTextValues(item) ||
        !IsOptionText(item.pOptType->pOptParam[0].pData)) {
        return false;
    }
    const std::wstring_view first = item.pOptType->pOptParam[0].pData;
    for (const std::wstring_view word : kDensityWords) {
        if (first.find(word) != std::wstring_view::npos) {
            return true;
        }
    }
    return false;
}

// A driver's texts may be constants.
bool IsWritable(const wchar_t* text, std::size_t length) noexcept {
    constexpr DWORD kWritable =
        PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    const auto* position = reinterpret_cast<const std::byte*>(text);
    const auto* const end = reinterpret_cast<const std::byte*>(text + length + 1);
    while (position < end) {
        MEMORY_BASIC_INFORMATION region{};
        if (VirtualQuery(position, &region, sizeof region) == 0 || region.State != MEM_COMMIT ||
            (region.Protect & kWritable) == 0 || (region.Protect & PAGE_GUARD) != 0) {
            return false;
        }
        position = static_cast<const std::byte*>(region.BaseAddress) + region.RegionSize;
    }
    return true;
}

// Writes into the host's buffer where the text fits, else points the value at our own.
void SetOptionText(std::map<const OPTPARAM*, HostText>& known, OPTPARAM& option, const std::wstring& text) {
    auto host = known.find(&option);
    if (IsOptionText(option.pData) && !IsKeptText(option.pData) &&
        (host == known.end() || host->second.text != option.pData)) {
        host = known.insert_or_assign(&option, HostText{option.pData, std::wstring_view(option.pData).size()})
                   .first;
    }
    if (host != known.end() && text.size() <= host->second.length &&
        IsWritable(host->second.text, text.size())) {
        text.copy(host->second.text, text.size());
        host->second.text[text.size()] = L'\0';
        option.pData = host->second.text;
    } else {
        option.pData = OwnText(text);
    }
}

constinit TextTable gTexts(L"GPD", kPrintDensityTexts);

}  // namespace

TextTable& DensityTexts() noexcept {
    return gTexts;
}

void RelabelPrintDensity(DocumentSheetContext& context) {
    const TextTable& texts = DensityTexts();
    for (OPTITEM& item : OptionItems(context)) {
        if (!IsPrintDensity(item)) {
            continue;
        }
        item.Flags |= OPTIF_CHANGED;
        item.pName = OwnText(texts[kDensityName]);
        const OPTTYPE& type = *item.pOptType;
        for (WORD j = 0; j < type.Count; ++j) {
            SetOptionText(context.optionTexts, type.pOptParam[j], texts[kDensityValue] + NumberText(j));
            TRACE_VERBOSE(L"GPDIndex       = %s\r\n", type.pOptParam[j].pData);
        }
        TRACE_VERBOSE(L"GPDIndex       =1111 %s\r\n", type.pOptParam[type.Count - 1].pData);
        UpdateOption(context, item);
    }
}

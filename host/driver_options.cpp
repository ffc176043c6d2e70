#include "driver_options.h"

#include <algorithm>
#include <stdexcept>

std::vector<OptionSource> ReceiptDriverOptions() {
    return {
        {.name = L"Paper Size",
         .level = 1,
         .dm_pub_id = DMPUB_FORMNAME,
         .values = {L"72mm x 297mm", L"72mm x 3276mm", L"64mm x 297mm", L"48mm x 210mm",
                    L"Custom Paper-R72"}},
        {.name = L"Printer Features", .level = 1},
        {.name = L"Print Density",
         .level = 2,
         .values = {L"Level Density 1", L"Level Density 2", L"Level Density 3", L"Level Density 4",
                    L"Level Density 5"},
         .selected = 2},
        {.name = L"Print Quality", .level = 2, .values = {L"Fast", L"Fine"}},
    };
}

DriverOptions::DriverOptions(std::span<const OptionSource> sources)
    : count_(static_cast<DWORD>(sources.size())), items_(sources.size() * sizeof(OPTITEM)) {
    OPTITEM* item = items();
    for (const OptionSource& source : sources) {
        item->cbSize = sizeof(OPTITEM);
        item->Level = source.level;
        item->DMPubID = source.dm_pub_id;
        item->pName = NewText(source.name);
        item->Sel = source.selected;
        item->pOptType = source.values.empty() ? nullptr : NewValues(source);
        ++item;
    }
}

wchar_t* DriverOptions::NewText(const std::wstring& text) {
    const GuardedBlock& block = blocks_.emplace_back((text.size() + 1) * sizeof(wchar_t));
    std::copy(text.begin(), text.end(), block.As<wchar_t>());
    return block.As<wchar_t>();
}

OPTTYPE* DriverOptions::NewValues(const OptionSource& source) {
    auto* values = blocks_.emplace_back(source.values.size() * sizeof(OPTPARAM)).As<OPTPARAM>();
    for (std::size_t i = 0; i < source.values.size(); ++i) {
        values[i].cbSize = sizeof(OPTPARAM);
        values[i].pData = NewText(source.values[i]);
    }
    auto* type = blocks_.emplace_back(sizeof(OPTTYPE)).As<OPTTYPE>();
    type->cbSize = sizeof(OPTTYPE);
    type->Type = TVOT_LISTBOX;
    type->Count = static_cast<WORD>(source.values.size());
    type->pOptParam = values;
    return type;
}

OPTITEM& DriverOptions::item(std::size_t index) const {
    if (index >= count_) {
        throw std::out_of_range("no such option item");
    }
    return items()[index];
}

std::wstring DriverOptions::Name(std::size_t index) const {
    return item(index).pName;
}

std::vector<std::wstring> DriverOptions::Values(std::size_t index) const {
    std::vector<std::wstring> texts;
    if (const OPTTYPE* type = item(index).pOptType) {
        for (WORD i = 0; i < type->Count; ++i) {
            texts.emplace_back(type->pOptParam[i].pData);
        }
    }
    return texts;
}

bool DriverOptions::GuardsIntact() const noexcept {
    return items_.Intact() && std::all_of(blocks_.begin(), blocks_.end(),
                                          [](const GuardedBlock& block) { return block.Intact(); });
}

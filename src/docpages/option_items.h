// The option items of the driver itself, which the host lends for as long as a sheet is open.
#pragma once

#include <span>

#include "intrface/win/sheet_context.h"

// All of them; none where the host lent none.
std::span<OPTITEM> OptionItems(const DocumentSheetContext& context) noexcept;

// Whether an item has values, and these are texts to select from: behind those of other types lie numbers,
// buffers or code.
bool HasTextValues(const OPTITEM& item) noexcept;

// Items may name their texts by resource number instead of pointing at them.
inline bool IsOptionText(const wchar_t* text) noexcept {
    return text != nullptr && !IS_INTRESOURCE(text);
}

// Tells the host that an item has changed.
void UpdateOption(const DocumentSheetContext& context, OPTITEM& item) noexcept;

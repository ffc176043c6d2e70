#include "docpages/option_items.h"

std::span<OPTITEM> OptionItems(const DocumentSheetContext& context) noexcept {
    const POEMCUIPPARAM parameter = context.pOEMCUIPParam;
    if (parameter == nullptr || parameter->pDrvOptItems == nullptr) {
        return {};
    }
    return {parameter->pDrvOptItems, parameter->cDrvOptItems};
}

bool HasTextValues(const OPTITEM& item) noexcept {
    const OPTTYPE* const type = item.pOptType;
    return type != nullptr && type->pOptParam != nullptr && type->Count != 0 &&
           (type->Type == TVOT_2STATES || type->Type == TVOT_3STATES || type->Type == TVOT_LISTBOX ||
            type->Type == TVOT_COMBOBOX);
}

void UpdateOption(const DocumentSheetContext& context, OPTITEM& item) noexcept {
    if (context.pDriverHelper != nullptr) {
        context.pDriverHelper->DrvUpdateUISetting(context.pOEMCUIPParam->poemuiobj, &item, 0,
                                                  OEMCUIP_DOCPROP);
    }
}

// What a page knows of its sheet and host. Members of the plug-in object, filled when a sheet is assembled
// and handed by address to every page as its creation parameter.
#pragma once

#include <windows.h>

#include <cstddef>
#include <map>
#include <vector>

#include "devmode/oemdev.h"
#include "intrface/print_oem.h"
#include "language/language_list.h"

struct DeviceSheetContext {
    HANDLE hComPropSheet = INVALID_HANDLE_VALUE;
    HANDLE hLastPage = INVALID_HANDLE_VALUE;
    PFNCOMPROPSHEET pfnComPropSheet = nullptr;
    POEMCUIPPARAM pOEMCUIPParam = nullptr;
    IPrintOemDriverUI* pDriverHelper = nullptr;

    // The host's; null when it gave none.
    HANDLE Printer() const noexcept { return pOEMCUIPParam != nullptr ? pOEMCUIPParam->hPrinter : nullptr; }
};

// The buffer that the host gave an option's text, and how many units it filled when it was first seen in a
// sheet: nothing else tells what it holds.
struct HostText {
    wchar_t* text;
    std::size_t length;
};

// The pages of the document sheet, in the order of their tabs.
enum class DocumentPage { kMain, kWaterMark, kOperation, kBarcode1D, kBarcode2D, kVersion, kCount };

struct DocumentSheetContext {
    HANDLE hComPropSheet = INVALID_HANDLE_VALUE;
    // Stays as it is: the barcode pages pass it as their page when they report their result.
    HANDLE hPage = INVALID_HANDLE_VALUE;
    POEMUIPSPARAM lParamInit = nullptr;
    POEMCUIPPARAM pOEMCUIPParam = nullptr;
    PFNCOMPROPSHEET pfnComPropSheet = nullptr;
    IPrintOemDriverUI* pDriverHelper = nullptr;

    // What the host returned for each page that was added.
    LONG_PTR pages[static_cast<std::size_t>(DocumentPage::kCount)] = {};

    // The watermark was removed since the Main page was last in front: "No" is to show there.
    bool waterMarkRemoved = false;

    // The languages to choose from, as read when the Main page opened.
    std::vector<LanguageEntry> languages;

    // Known since the sheet was assembled.
    std::map<const OPTPARAM*, HostText> optionTexts;

    LONG_PTR PageHandle(DocumentPage page) const noexcept { return pages[static_cast<std::size_t>(page)]; }

    // The host's; null when it gave none.
    HANDLE Printer() const noexcept { return pOEMCUIPParam != nullptr ? pOEMCUIPParam->hPrinter : nullptr; }

    // The record to edit; null when the host gave none.
    OEMDEV* Record() const noexcept {
        if (lParamInit != nullptr && lParamInit->pOEMDM != nullptr) {
            return static_cast<OEMDEV*>(lParamInit->pOEMDM);
        }
        return pOEMCUIPParam != nullptr ? static_cast<OEMDEV*>(pOEMCUIPParam->pOEMDM) : nullptr;
    }
};

#include "docpages/document_pages.h"

#include <iterator>

#include "devpages/version_page.h"
#include "docpages/barcode_1d_page.h"
#include "docpages/barcode_2d_page.h"
#include "docpages/layout_page.h"
#include "docpages/operation_page.h"
#include "docpages/water_mark_page.h"
#include "resources/resource.h"

namespace {

// The line that tells of the Main page tells of the Water Mark page too.
constexpr wchar_t kLayoutLine[] = L"UI:  Init LayoutPage property page\r\n";

constexpr DocumentPageEntry kPages[] = {
    {DocumentPage::kMain, IDD_MAIN_PAGE, LayoutPageTexts, kLayoutPageTitle, LayoutPropPageProc, kLayoutLine},
    {DocumentPage::kWaterMark, IDD_WATERMARK_PAGE, WaterMarkPageTexts, kWaterMarkPageTitle,
     WaterMarkPropPageProc, kLayoutLine},
    {DocumentPage::kOperation, IDD_OPERATION_PAGE, OperationPageTexts, kOperationPageTitle,
     DocOperationPropPageProc, L"UI:  Init operation property page\r\n"},
    {DocumentPage::kBarcode1D, IDD_BARCODE_1D_PAGE, Barcode1DPageTexts, kBarcode1DPageTitle,
     BarcodePropPageProc, L"UI:  Init barcode property page\r\n"},
    {DocumentPage::kBarcode2D, IDD_BARCODE_2D_PAGE, Barcode2DPageTexts, kBarcode2DPageTitle,
     Barcode2DPropPageProc, L"UI:  Init 2DCode property page\r\n"},
    {DocumentPage::kVersion, IDD_VERSION_PAGE, VersionPageTexts, kVersionPageTitle, DeviceVersionPropPageProc,
     L"UI:  Init version property page\r\n"},
};
static_assert(std::size(kPages) == static_cast<std::size_t>(DocumentPage::kCount));

}  // namespace

std::span<const DocumentPageEntry> DocumentPages() noexcept {
    return kPages;
}

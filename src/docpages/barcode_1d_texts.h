// The 1D Code page's texts, section "1DCODE".
#pragma once

#include <iterator>

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kBarcode1DPageTitle = 0;

constexpr TextEntry kBarcode1DPageTexts[] = {
    {kNoControl, TEXT16("RC_1DCODEFORM"), TEXT16("1D Code"), kShortCaption},
    {IDC_BARCODE1D_FONT_LABEL, TEXT16("RC_STATIC_1DCODE_FONTNAME"), TEXT16("Font Name:"), kShortCaption},
    {IDC_BARCODE1D_TYPE_LABEL, TEXT16("RC_STATIC_1DCODE_TYPE"), TEXT16("Type:"), kShortCaption},
    {IDC_BARCODE1D_GENERAL_GROUP, TEXT16("RC_STATIC_GENERALBARCODE"), TEXT16("General Bar Code"),
     kLongCaption},
    {IDC_BARCODE1D_WIDTH_LABEL, TEXT16("RC_STATIC_1DCODE_WIDTH"), TEXT16("Element Width:"), kShortCaption},
    {IDC_BARCODE1D_HEIGHT_LABEL, TEXT16("RC_STATIC_1DCODE_HEIGHT"), TEXT16("Element Height:"), kShortCaption},
    {IDC_BARCODE1D_POINTS_LABEL, TEXT16("RC_STATIC_1DCODE_POINT"), TEXT16("point"), kShortCaption},
    {IDC_BARCODE1D_NOTICE, TEXT16("RC_STATIC_1DCODE_NOTICE"),
     TEXT16("Select this font size in the application."), kLongCaption},
    {IDC_BARCODE1D_HRI_POSITION_LABEL, TEXT16("RC_STATIC_1DCODE_POSITION"), TEXT16("HRI Position:"),
     kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_1DCODE_POSITION1"), TEXT16("Not printed"), kLongCaption},
    {kNoControl, TEXT16("RC_STATIC_1DCODE_POSITION2"), TEXT16("Above the barcode"), kLongCaption},
    {kNoControl, TEXT16("RC_STATIC_1DCODE_POSITION3"), TEXT16("Below the barcode"), kLongCaption},
    {kNoControl, TEXT16("RC_STATIC_1DCODE_POSITION4"), TEXT16("Both above and below the barcode"),
     kLongCaption},
    {IDC_BARCODE1D_HRI_FONT_LABEL, TEXT16("RC_STATIC_1DCODE_HRIFONT"), TEXT16("HRI Font:"), kShortCaption},
    {IDC_BARCODE1D_GS1_GROUP, TEXT16("RC_STATIC_1DCODE_GSDATABAR"), TEXT16("GS1 DataBar"), kLongCaption},
    {IDC_BARCODE1D_GS1_KIND_LABEL, TEXT16("RC_STATIC_1DCODE_GSTYPE"), TEXT16("Type:"), kShortCaption},
    {IDC_BARCODE1D_GS1_INDEPENDENT, TEXT16("RC_RADIO_Independence1"), TEXT16("Independence"), kLongCaption},
    {IDC_BARCODE1D_GS1_COMPOSITE, TEXT16("RC_RADIO_Complex1"), TEXT16("Composite"), kLongCaption},
    {IDC_BARCODE1D_GS1_WIDTH_LABEL, TEXT16("RC_STATIC_1DCODE_GSEWIDTH"), TEXT16("Element Width:"),
     kShortCaption},
    {IDC_BARCODE1D_GS1_ROW_LABEL, TEXT16("RC_STATIC_1DCODE_GSRHEIGHT"), TEXT16("Row Height:"), kShortCaption},
    {IDC_BARCODE1D_GS1_COMPOSITE_ROW_LABEL, TEXT16("RC_STATIC_1DCODE_GS2DRHEIGHT"), TEXT16("2D Row Height:"),
     kShortCaption},
    {IDC_BARCODE1D_GS1_SEPARATOR_LABEL, TEXT16("RC_STATIC_1DCODE_GSSHEIGHT"), TEXT16("Separator Height:"),
     kShortCaption},
    {IDC_BARCODE1D_GS1_HRI_LABEL, TEXT16("RC_STATIC_1DCODE_HRI"), TEXT16("HRI:"), kShortCaption},
    {kNoControl, TEXT16("RC_CMB_HRI1"), TEXT16("Primary and Secondary Data"), kLongCaption},
    {kNoControl, TEXT16("RC_CMB_HRI2"), TEXT16("Primary Data"), kLongCaption},
    {kNoControl, TEXT16("RC_CMB_HRI3"), TEXT16("Secondary Data"), kLongCaption},
    {kNoControl, TEXT16("RC_CMB_HRI4"), TEXT16("None"), kLongCaption},
    {IDC_BARCODE1D_GS1_EXPANDED_LABEL, TEXT16("RC_STATIC_1DCODE_AAISTD"), TEXT16("Expanded:"), kShortCaption},
    {kNoControl, TEXT16("RC_CMB_AI1"), TEXT16("None"), kLongCaption},
    {kNoControl, TEXT16("RC_CMB_AI2"), TEXT16("Application Identifier Specification to Data"), kLongCaption},
    {IDC_BARCODE1D_TEST_GROUP, TEXT16("RC_STATIC_1DCODE_PRINT"), TEXT16("Test Print"), kLongCaption},
    {IDC_BARCODE1D_DATA_LABEL, TEXT16("RC_STATIC_1DCODE_DATA"), TEXT16("Data:"), kShortCaption},
    {IDC_BARCODE1D_PRINT, TEXT16("RC_BUTTON_PRINT"), TEXT16("Print"), kShortCaption},
};

constexpr ListTexts kHriPositionList = {9, 4};
constexpr ListTexts kGs1HriList1D = {23, 4};
constexpr ListTexts kGs1ExpandedList1D = {28, 2};

// Help texts, in the order in which the page looks for a helped control.
constexpr TextEntry kBarcode1DPageHelp[] = {
    {IDC_BARCODE1D_FONT, TEXT16("CTEXT_FONTNAME"),
     TEXT16("Select the barcode font to be set. Text that an application prints in this font is printed as "
            "barcode."),
     kHelpText},
    {IDC_BARCODE1D_TYPE, TEXT16("CTEXT_BARCODETYPE"), TEXT16("Select the type of barcode."), kHelpText},
    {IDC_BARCODE1D_WIDTH, TEXT16("CTEXT_EDIT_WIDTH1D"),
     TEXT16("Specify the element width of barcode. The unit of width is dot, available range is 2-6."),
     kHelpText},
    {IDC_BARCODE1D_HEIGHT, TEXT16("CTEXT_EDIT_HEIGHT1D"),
     TEXT16("Specify the element height of barcode. The unit of height is dot, available range is 1-255."),
     kHelpText},
    {IDC_BARCODE1D_HRI_POSITION, TEXT16("CTEXT_HRIPOSITION"),
     TEXT16("Select the print position of HRI characters (the readable text of barcode)."), kHelpText},
    {IDC_BARCODE1D_HRI_FONT_A, TEXT16("CTEXT_FONTA"), TEXT16("Print the HRI characters in Font A."),
     kHelpText},
    {IDC_BARCODE1D_HRI_FONT_B, TEXT16("CTEXT_FONTB"), TEXT16("Print the HRI characters in Font B."),
     kHelpText},
    {IDC_BARCODE1D_DATA, TEXT16("CTEXT_EDIT_PRINT"), TEXT16("Edit the barcode data for test print."),
     kHelpText},
    {IDC_BARCODE1D_PRINT, TEXT16("CTEXT_BUTTON_PRINT"),
     TEXT16("Print a test barcode with the current settings and data."), kHelpText},
    {IDC_BARCODE1D_GS1_INDEPENDENT, TEXT16("CTEXT_RADIO_Independence1"),
     TEXT16("Print the GS1 DataBar alone, without 2D composite part."), kHelpText},
    {IDC_BARCODE1D_GS1_COMPOSITE, TEXT16("CTEXT_RADIO_Complex1"),
     TEXT16("Print the GS1 DataBar with 2D composite part. The 2D row height can be set after selecting this "
            "item."),
     kHelpText},
    {IDC_BARCODE1D_GS1_WIDTH, TEXT16("CTEXT_EDIT_GS1WIDTH"),
     TEXT16("Specify the element width of GS1 DataBar. The unit of width is dot, available range is 1-6."),
     kHelpText},
    {IDC_BARCODE1D_GS1_ROW, TEXT16("CTEXT_EDIT_GS1HEIGHT"),
     TEXT16("Specify the row height of GS1 DataBar. The unit of width is dot, available range is 2-250."),
     kHelpText},
    {IDC_BARCODE1D_GS1_COMPOSITE_ROW, TEXT16("CTEXT_EDIT_ComplexHEIGHT"),
     TEXT16("Specify the row height of 2D composite part. This item is only enabled when Composite is "
            "selected, available range is 1-10."),
     kHelpText},
    {IDC_BARCODE1D_GS1_SEPARATOR, TEXT16("CTEXT_EDIT_SeparatorHEIGHT"),
     TEXT16("Specify the height of separator. Available range is 1-10."), kHelpText},
    {IDC_BARCODE1D_GS1_HRI, TEXT16("CTEXT_CMB_HRI"),
     TEXT16("Select the data to be printed as HRI characters."), kHelpText},
    {IDC_BARCODE1D_GS1_EXPANDED, TEXT16("CTEXT_CMB_AI"),
     TEXT16("Select whether application identifiers are specified in the data. This item is only enabled for "
            "GS1 DataBar Expanded."),
     kHelpText},
};

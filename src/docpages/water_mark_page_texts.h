// The Water Mark page's texts, section "WATERMARK".
#pragma once

#include <iterator>

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kWaterMarkPageTitle = 0;

constexpr TextEntry kWaterMarkPageTexts[] = {
    {kNoControl, TEXT16("RC_WATERMARKFORM"), TEXT16("Water Mark"), kShortCaption},
    {IDC_WATERMARK_USE_NONE, TEXT16("RC_RADIO_NO"), TEXT16("No Water Mark"), kShortCaption},
    {IDC_WATERMARK_USE_IMAGE, TEXT16("RC_RADIO_IMAGE"), TEXT16("Image Water Mark"), kShortCaption},
    {IDC_WATERMARK_FILE_LABEL, TEXT16("RC_STATIC_WATERMARK_BMP"), TEXT16("Bitmap:"), kShortCaption},
    {IDC_WATERMARK_BROWSE, TEXT16("RC_SELECT_PICTURE"), TEXT16("Browse..."), kShortCaption},
    {IDC_WATERMARK_USE_TEXT, TEXT16("RC_RADIO_TEXT"), TEXT16("Text Water Mark"), kShortCaption},
    {IDC_WATERMARK_TEXT_LABEL, TEXT16("RC_STATIC_WATERMARK_TEXT"), TEXT16("Text:"), kShortCaption},
    {IDC_WATERMARK_FONT_LABEL, TEXT16("RC_STATIC_WATERMARK_FONTTYPE"), TEXT16("Font Type:"), kShortCaption},
    {IDC_WATERMARK_STYLE_LABEL, TEXT16("RC_STATIC_WATERMARK_FONTSTYLE"), TEXT16("Font Style:"),
     kShortCaption},
    {IDC_WATERMARK_FONT_SIZE_LABEL, TEXT16("RC_STATIC_WATERMARK_FONTSIZE"), TEXT16("Font Size:"),
     kShortCaption},
    {IDC_WATERMARK_ANGLE_LABEL, TEXT16("RC_STATIC_WATERMARK_ANGLE"), TEXT16("Angle:"), kShortCaption},
    {IDC_WATERMARK_POSITION_LABEL, TEXT16("RC_STATIC_WATERMARK_POSITION"), TEXT16("Print Position:"),
     kShortCaption},
    {IDC_WATERMARK_SIZE_LABEL, TEXT16("RC_STATIC_WATERMARK_SIZE"), TEXT16("Size:"), kShortCaption},
    {IDC_WATERMARK_BRIGHTNESS_LABEL, TEXT16("RC_STATIC_WATERMARK_BRIGHTNESS"), TEXT16("Brightness:"),
     kShortCaption},
    // Font style list.
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_FONTSTYLE1"), TEXT16("Regular"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_FONTSTYLE2"), TEXT16("Italic"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_FONTSTYLE3"), TEXT16("Bold"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_FONTSTYLE4"), TEXT16("Bold Italic"), kShortCaption},
    // Position list.
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION1"), TEXT16("Left-Top"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION2"), TEXT16("Center-Top"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION3"), TEXT16("Right-Top"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION4"), TEXT16("Left-Middle"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION5"), TEXT16("Center-Middle"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION6"), TEXT16("Right-Middle"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION7"), TEXT16("Left-Bottom"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION8"), TEXT16("Center-Bottom"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION9"), TEXT16("Right-Bottom"), kShortCaption},
    {kNoControl, TEXT16("RC_STATIC_WATERMARK_POSITION10"), TEXT16("Tiled"), kShortCaption},
};

constexpr ListTexts kFontStyleList = {14, 4};
constexpr ListTexts kPositionList = {18, 10};
static_assert(kPositionList.first + kPositionList.count == std::size(kWaterMarkPageTexts));

// Help texts, in the order in which the page looks for a helped control.
constexpr TextEntry kWaterMarkPageHelp[] = {
    {IDC_WATERMARK_USE_NONE, TEXT16("CTEXT_RADIO_NO"),
     TEXT16("Whether to use watermark printing function. Watermark printing is not used if this item is "
            "selected."),
     kHelpText},
    {IDC_WATERMARK_USE_IMAGE, TEXT16("CTEXT_RADIO_IMAGE"),
     TEXT16("'Whether to use watermark printing function. Please select one bitmap to be as watermark of "
            "printing if this item is selected."),
     kHelpText},
    {IDC_WATERMARK_FILE, TEXT16("CTEXT_PICTURE_NAME"), TEXT16("Select the path of watermark bitmap."),
     kHelpText},
    {IDC_WATERMARK_BROWSE, TEXT16("CTEXT_SELECT_PICTURE"), TEXT16("Select the path of watermark bitmap."),
     kHelpText},
    {IDC_WATERMARK_USE_TEXT, TEXT16("CTEXT_RADIO_TEXT"),
     TEXT16("Whether to use watermark printing function. Please select one text to be as watermark of "
            "printing if this item is selected."),
     kHelpText},
    {IDC_WATERMARK_TEXT, TEXT16("CTEXT_COMBO_TEXT"), TEXT16("Select or edit the text used as watermark."),
     kHelpText},
    {IDC_WATERMARK_FONT, TEXT16("CTEXT_COMBO_FONTTYPE"),
     TEXT16("Set the font type of text used as watermark."), kHelpText},
    {IDC_WATERMARK_STYLE, TEXT16("CTEXT_COMBO_FONTSTYLE"),
     TEXT16("Set the font style of text used as watermark."), kHelpText},
    {IDC_WATERMARK_FONT_SIZE, TEXT16("CTEXT_EDIT_FONTSIZE"),
     TEXT16("Set the font size of text used as watermark."), kHelpText},
    {IDC_WATERMARK_ANGLE, TEXT16("CTEXT_SLIDER_ANGLE"),
     TEXT16("Set the rotation angle of text used as watermark."), kHelpText},
    {IDC_WATERMARK_POSITION, TEXT16("CTEXT_COMBO_POSITION"), TEXT16("Set the print position of watermark."),
     kHelpText},
    {IDC_WATERMARK_SIZE, TEXT16("CTEXT_SLIDER_SIZE"), TEXT16("Set the zoom size of watermark."), kHelpText},
    {IDC_WATERMARK_BRIGHTNESS, TEXT16("CTEXT_SLIDER_LIGHT"), TEXT16("Set the brightness of watermark."),
     kHelpText},
};

// The Operation settings dialog's texts, section "DOCUMENT".
#pragma once

#include <iterator>

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr TextEntry kOperationDialogTexts[] = {
    // Titles, by moment.
    {kNoControl, TEXT16("RC_DOCUMENT_STARTDOC"), TEXT16("Start Document Operation"), kLongCaption},
    {kNoControl, TEXT16("RC_DOCUMENT_STARTPAGE"), TEXT16("Start Page Operation"), kLongCaption},
    {kNoControl, TEXT16("RC_DOCUMENT_ENDPAGE"), TEXT16("End Page Operation"), kLongCaption},
    {kNoControl, TEXT16("RC_DOCUMENT_ENDDOC"), TEXT16("End Document Operation"), kLongCaption},
    // Captions.
    {IDC_OPERATION_SEND_COMMAND, TEXT16("RC_SEND_COMMAND"), TEXT16("Send Command      [Example:1D 56 42 00]"),
     kLongCaption},
    {IDC_OPERATION_OPEN_DRAWER, TEXT16("RC_OPEN_DRAWER"), TEXT16("Open Drawer"), kLongCaption},
    {IDC_OPERATION_USE_HERALD, TEXT16("RC_ORDER_MESSENGER"), TEXT16("Herald"), kLongCaption},
    {IDC_OPERATION_BUZZER_LABEL, TEXT16("RC_STATIC_OPERATION_BUZZER"), TEXT16("Buzzer:"), kLongCaption},
    {IDC_OPERATION_VOLUME_LABEL, TEXT16("RC_STATIC_BUZZER_VOLUME"), TEXT16("Buzzer Volume:"), kLongCaption},
    {IDC_OPERATION_FEED_LABEL, TEXT16("RC_STATIC_OPERATION_FEED"), TEXT16("Paper Feed:"), kLongCaption},
    {IDC_OPERATION_FEED_TO_POSITION, TEXT16("RC_FEEDTOPOSITION"), TEXT16("Feed to cut position before cut"),
     kLongCaption},
    {IDC_OPERATION_CUT_LABEL, TEXT16("RC_PAPERCUT"), TEXT16("Paper Cut:"), kLongCaption},
    {IDC_OPERATION_LOGO_LABEL, TEXT16("RC_STATIC_OPERATION_LOGO"), TEXT16("Print Logo:"), kLongCaption},
    {IDC_OPERATION_ALIGN_LABEL, TEXT16("RC_STATIC_OPERATION_ALIGN"), TEXT16("Align:"), kShortCaption},
    {IDC_OPERATION_ALIGN_LEFT, TEXT16("RC_LEFT"), TEXT16("Left"), kShortCaption},
    {IDC_OPERATION_ALIGN_CENTERED, TEXT16("RC_CENTERED"), TEXT16("Centered"), kShortCaption},
    {IDC_OPERATION_ALIGN_RIGHT, TEXT16("RC_RIGHT"), TEXT16("Start Page Operation"), kShortCaption},
    {IDC_OPERATION_POSITION_LABEL, TEXT16("RC_STATIC_OPERATION_POSITION"), TEXT16("Position:"),
     kShortCaption},
    {IDC_OPERATION_BEFORE_CUT, TEXT16("RC_BEFORE_CUT"), TEXT16("Before Cut"), kShortCaption},
    {IDC_OPERATION_AFTER_CUT, TEXT16("RC_AFTER_CUT"), TEXT16("After Cut"), kShortCaption},
    {IDC_OPERATION_DEFAULT, TEXT16("RC_OPERATION_DEFAULT"), TEXT16("Default"), kShortCaption},
    {IDC_OPERATION_OK, TEXT16("RC_OPERATION_OK"), TEXT16("OK"), kShortCaption},
    {IDC_OPERATION_CANCEL, TEXT16("RC_OPERATION_CANCEL"), TEXT16("Cancel"), kShortCaption},
    // Cash drawer list.
    {kNoControl, TEXT16("RC_OPENDRAWER1"), TEXT16("No Cash Drawer"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER2"), TEXT16("Cash Drawer #1 Waiting 10ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER3"), TEXT16("Cash Drawer #1 Waiting 20ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER4"), TEXT16("Cash Drawer #1 Waiting 40ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER5"), TEXT16("Cash Drawer #1 Waiting 60ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER6"), TEXT16("Cash Drawer #2 Waiting 10ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER7"), TEXT16("Cash Drawer #2 Waiting 20ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER8"), TEXT16("Cash Drawer #2 Waiting 40ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER9"), TEXT16("Cash Drawer #2 Waiting 60ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER10"), TEXT16("Cash Drawer #1+#2 Waiting 10ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER11"), TEXT16("Cash Drawer #1+#2 Waiting 20ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER12"), TEXT16("Cash Drawer #1+#2 Waiting 40ms"), kLongCaption},
    {kNoControl, TEXT16("RC_OPENDRAWER13"), TEXT16("Cash Drawer #1+#2 Waiting 60ms"), kLongCaption},
    // Herald list.
    {kNoControl, TEXT16("RC_ORDERMESSENGER1"), TEXT16("Enable"), kLongCaption},
    {kNoControl, TEXT16("RC_ORDERMESSENGER2"), TEXT16("Disable"), kLongCaption},
    // Buzzer list.
    {kNoControl, TEXT16("RC_OPERATION_BUZZER1"), TEXT16("Beep off"), kLongCaption},
    {kNoControl, TEXT16("RC_OPERATION_BUZZER2"), TEXT16("Beep one"), kLongCaption},
    {kNoControl, TEXT16("RC_OPERATION_BUZZER3"), TEXT16("Beep three"), kLongCaption},
    {kNoControl, TEXT16("RC_OPERATION_BUZZER4"), TEXT16("Beep five"), kLongCaption},
    {kNoControl, TEXT16("RC_OPERATION_BUZZER5"), TEXT16("Beep ten"), kLongCaption},
    {kNoControl, TEXT16("RC_OPERATION_BUZZER6"), TEXT16("Beep twenty"), kLongCaption},
    // Cut list.
    {kNoControl, TEXT16("RC_PAPER_CUT1"), TEXT16("No Cut"), kLongCaption},
    {kNoControl, TEXT16("RC_PAPER_CUT2"), TEXT16("Partial Cut"), kLongCaption},
    {kNoControl, TEXT16("RC_PAPER_CUT3"), TEXT16("Full Cut"), kLongCaption},
    // Logo list.
    {kNoControl, TEXT16("RC_PRINT_LOGO1"), TEXT16("Not Print Logo"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO2"), TEXT16("Print Logo1"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO3"), TEXT16("Print Logo2"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO4"), TEXT16("Print Logo3"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO5"), TEXT16("Print Logo4"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO6"), TEXT16("Print Logo5"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO7"), TEXT16("Print Logo6"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO8"), TEXT16("Print Logo7"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO9"), TEXT16("Print Logo8"), kLongCaption},
    {kNoControl, TEXT16("RC_PRINT_LOGO10"), TEXT16("Print Logo9"), kLongCaption},
};

constexpr ListTexts kDrawerList = {23, 13};
constexpr ListTexts kHeraldList = {36, 2};
constexpr ListTexts kBuzzerList = {38, 6};
constexpr ListTexts kCutList = {44, 3};
constexpr ListTexts kLogoList = {47, 10};
static_assert(kLogoList.first + kLogoList.count == std::size(kOperationDialogTexts));

// Help texts, in the order in which the dialog looks for a helped control.
constexpr TextEntry kOperationDialogHelp[] = {
    {IDC_OPERATION_SEND_COMMAND, TEXT16("CTEXT_SEND_COMMAND"),
     TEXT16("The command input column is enabled if this item is selected. Edit command which needs to be "
            "sent in the input column, this command will be sent at the document corresponding position."),
     kHelpText},
    {IDC_OPERATION_COMMAND, TEXT16("CTEXT_EDIT"),
     TEXT16("Edit the command which needs to be sent in the input column."), kHelpText},
    {IDC_OPERATION_OPEN_DRAWER, TEXT16("CTEXT_OPEN_DRAWER"),
     TEXT16("Parameter of cash drawer can be set after selecting this item, and printer will control the "
            "cash drawer at document corresponding position."),
     kHelpText},
    {IDC_OPERATION_DRAWER, TEXT16("CTEXT_OPENDRAWER"),
     TEXT16("Select the cash drawer number and pulse time for opening."), kHelpText},
    {IDC_OPERATION_USE_HERALD, TEXT16("CTEXT_ORDER_MESSENGER"),
     TEXT16("The print messenger can be set after selecting this item. The print messenger will give the "
            "prompts you needed at the document corresponding position."),
     kHelpText},
    {IDC_OPERATION_HERALD, TEXT16("CTEXT_ORDERMESSENGER"), TEXT16("Set the print messenger status (on/off)."),
     kHelpText},
    {IDC_OPERATION_BUZZER, TEXT16("CTEXT_BUZZER"),
     TEXT16("Whether to enable the buzzer, and set the buzzer beep time."), kHelpText},
    {IDC_OPERATION_VOLUME, TEXT16("CTEXT_BUZZERVOLUME"),
     TEXT16("Set the volume of buzzer. This item is only enabled when the buzzer is on."), kHelpText},
    {IDC_OPERATION_FEED, TEXT16("CTEXT_PAPER_FEED"),
     TEXT16("Set paper feed distance. Print blank for the distance needed at the document corresponding "
            "position."),
     kHelpText},
    {IDC_OPERATION_FEED_TO_POSITION, TEXT16("CTEXT_FEEDTOPOSITION"),
     TEXT16("Feed paper to the cut position before cutting. After selecting this item, the print content "
            "will be sent out completely to avoid being cut off."),
     kHelpText},
    {IDC_OPERATION_CUT, TEXT16("CTEXT_PAPER_CUT"),
     TEXT16("Set the paper cut type(full cut / partial cut / no cut)."), kHelpText},
    {IDC_OPERATION_LOGO, TEXT16("CTEXT_PRINT_LOGO"),
     TEXT16("Set the serial number of Logo to be printed. These Logos are bitmaps stored in the Flash of "
            "printer, please confirm the needed Logo are stored in the printer before using these Logos."),
     kHelpText},
    {IDC_OPERATION_ALIGN_LEFT, TEXT16("CTEXT_LEFT"),
     TEXT16("Select the Logo alignment mode to be left justification."), kHelpText},
    {IDC_OPERATION_ALIGN_CENTERED, TEXT16("CTEXT_CENTERED"),
     TEXT16("Select the Logo alignment mode to be center justification."), kHelpText},
    {IDC_OPERATION_ALIGN_RIGHT, TEXT16("CTEXT_RIGHT"),
     TEXT16("Select the Logo alignment mode to be right justification."), kHelpText},
    {IDC_OPERATION_BEFORE_CUT, TEXT16("CTEXT_BEFORE_CUT"),
     TEXT16("Select the Logo to be print before paper cut."), kHelpText},
    {IDC_OPERATION_AFTER_CUT, TEXT16("CTEXT_AFTER_CUT"),
     TEXT16("Select the Logo to be print after paper cut."), kHelpText},
    {IDC_OPERATION_DEFAULT, TEXT16("CTEXT_IDDEFAULT"),
     TEXT16("Recovery the optional items in this interface to be default."), kHelpText},
    {IDC_OPERATION_OK, TEXT16("CTEXT_IDOK"), TEXT16("Confirm your settings."), kHelpText},
    {IDC_OPERATION_CANCEL, TEXT16("CTEXT_IDCANCEL"), TEXT16("Cancel your settings."), kHelpText},
};

// Dialogs of the host's own tabs. Numbers stay clear of the plug-in's, so that a control found by number on a
// page is never the wrong one.
#pragma once

#define IDD_HOST_LAYOUT 9001
#define IDD_HOST_QUALITY 9002
#define IDD_HOST_GENERAL 9003
#define IDD_HOST_PORTS 9004

#define IDC_HOST_FORMS_LABEL 9101
#define IDC_HOST_FORMS 9102
#define IDC_HOST_DENSITY_LABEL 9103
#define IDC_HOST_DENSITY 9104
#define IDC_HOST_QUALITY_LABEL 9105
#define IDC_HOST_QUALITY 9106
#define IDC_HOST_PRINTER 9107
#define IDC_HOST_PORT 9108

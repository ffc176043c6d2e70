// The Operation page's captions, section "OPERATION".
#pragma once

#include "language/text_entry.h"
#include "resources/resource.h"

constexpr std::size_t kOperationPageTitle = 0;

constexpr TextEntry kOperationPageTexts[] = {
    {kNoControl, TEXT16("RC_OPERATIONFORM"), TEXT16("Operation"), kShortCaption},
    {IDC_OPERATION_PAGE_DOC_START, TEXT16("RC_STARTDOC"), TEXT16("Start of Document"), kShortCaption},
    {IDC_OPERATION_PAGE_PAGE_START, TEXT16("RC_STARTPAGE"), TEXT16("Start of Page"), kShortCaption},
    {IDC_OPERATION_PAGE_PAGE_END, TEXT16("RC_ENDPAGE"), TEXT16("End of Page"), kShortCaption},
    {IDC_OPERATION_PAGE_DOC_END, TEXT16("RC_ENDDOC"), TEXT16("End of Document"), kShortCaption},
    {IDC_OPERATION_PAGE_DOC_START_NOTE, TEXT16("RC_STATIC_SDOC"), TEXT16("Operation when document starts"),
     kLongCaption},
    {IDC_OPERATION_PAGE_PAGE_START_NOTE, TEXT16("RC_STATIC_SPAGE"), TEXT16("Operation when page starts"),
     kLongCaption},
    {IDC_OPERATION_PAGE_PAGE_END_NOTE, TEXT16("RC_STATIC_ENDPAGE"), TEXT16("Operation when page ends"),
     kLongCaption},
    {IDC_OPERATION_PAGE_DOC_END_NOTE, TEXT16("RC_STATIC_ENDDOC"), TEXT16("Operation when document ends"),
     kLongCaption},
};

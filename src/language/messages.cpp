#include "language/messages.h"

#include "language/message_texts.h"

namespace {

static_assert(std::size(kDocumentMessageTexts) ==
              static_cast<std::size_t>(DocumentMessage::kCommandLength) + 1);

UINT IconOf(MessageTitle title) noexcept {
    switch (title) {
        case MessageTitle::kInformation:
            return MB_ICONINFORMATION;
        case MessageTitle::kWarning:
            return MB_ICONWARNING;
        case MessageTitle::kError:
            return MB_ICONERROR;
    }
    return 0;
}

constinit TextTable gMessages(L"MessageBox", kDocumentMessageTexts);

}  // namespace

TextTable& DocumentMessages() noexcept {
    return gMessages;
}

void ShowMessage(HWND owner, const wchar_t* text, MessageTitle title, MessageIcon icon) noexcept {
    MessageBoxW(owner, text, DocumentMessages()[static_cast<std::size_t>(title)],
                MB_OK | (icon == MessageIcon::kOfTitle ? IconOf(title) : 0));
}

void ShowMessage(HWND owner, DocumentMessage message, MessageTitle title, MessageIcon icon) noexcept {
    ShowMessage(owner, DocumentMessages()[static_cast<std::size_t>(message)], title, icon);
}

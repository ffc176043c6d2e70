#include "language/messages.h"

#include "language/message_texts.h"

namespace {

static_assert(std::size(kMessageTexts) == static_cast<std::size_t>(Message::kCount));

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

constinit TextTable gMessages(L"MessageBox", kMessageTexts);

}  // namespace

TextTable& Messages() noexcept {
    return gMessages;
}

void ShowMessage(HWND owner, const wchar_t* text, MessageTitle title, MessageIcon icon) noexcept {
    MessageBoxW(owner, text, Messages()[static_cast<std::size_t>(title)],
                MB_OK | (icon == MessageIcon::kOfTitle ? IconOf(title) : 0));
}

void ShowMessage(HWND owner, Message message, MessageTitle title, MessageIcon icon) noexcept {
    ShowMessage(owner, Messages()[static_cast<std::size_t>(message)], title, icon);
}

#include "devpages/paper_sizes.h"

#include <algorithm>

namespace {

constexpr std::int32_t kFormUnitsInTenth = 100;

constexpr StringView16 kPrefix = kPaperPrefix;

}  // namespace

TypedSize ClampPaperSize(const PaperSizeBox& box, std::int32_t typed) noexcept {
    const auto size = static_cast<std::int32_t>(std::clamp(static_cast<std::uint32_t>(typed),
                                                           static_cast<std::uint32_t>(box.least),
                                                           static_cast<std::uint32_t>(box.most)));
    return {size, size != typed};
}

FormGeometry GeometryOf(PaperSize size) noexcept {
    const std::int32_t width = size.width * kFormUnitsInTenth;
    const std::int32_t height = size.height * kFormUnitsInTenth;
    return {width, height, 0, 0, width, height};
}

PaperSize SizeOf(const PaperForm& form) noexcept {
    return {form.width / kFormUnitsInTenth, form.height / kFormUnitsInTenth};
}

bool IsCustomPaper(StringView16 formName) noexcept {
    return formName.find(kPrefix) != StringView16::npos;
}

bool IsDefaultPaper(StringView16 formName) noexcept {
    return formName == kDefaultPaper;
}

StringView16 ShownName(StringView16 formName) noexcept {
    return formName.substr(std::min(kPrefix.size(), formName.size()));
}

String16 FormNameOf(StringView16 shownName) {
    return String16(kPrefix).append(shownName);
}

std::vector<PaperForm> CustomPapersOf(std::vector<PaperForm> forms) {
    std::erase_if(forms, [](const PaperForm& form) { return !IsCustomPaper(form.name); });
    std::stable_partition(forms.begin(), forms.end(),
                          [](const PaperForm& form) { return IsDefaultPaper(form.name); });
    return forms;
}

const PaperForm* FindForm(std::span<const PaperForm> forms, StringView16 formName) noexcept {
    const auto found = std::find_if(forms.begin(), forms.end(),
                                    [formName](const PaperForm& form) { return form.name == formName; });
    return found == forms.end() ? nullptr : &*found;
}

const PaperForm* FormToRewrite(std::span<const PaperForm> forms, StringView16 shownName) noexcept {
    const auto found = std::find_if(forms.begin(), forms.end(), [shownName](const PaperForm& form) {
        return IsCustomPaper(form.name) && ShownName(form.name) == shownName;
    });
    return found == forms.end() ? nullptr : &*found;
}

std::optional<std::size_t> SelectionAfterDelete(std::size_t removed, std::size_t left) noexcept {
    if (left == 0) {
        return std::nullopt;
    }
    return std::min(removed, left - 1);
}

bool CanDelete(std::optional<StringView16> selectedName) noexcept {
    return selectedName.has_value() && !IsDefaultPaper(*selectedName);
}

#include "docpages/operation_preview.h"

#include "resources/resource.h"

int OperationPreviewBitmap(Moment moment, bool feedToPosition, bool cut) noexcept {
    // By moment; then feed and cut, feed, cut, neither.
    constexpr int kBitmaps[][4] = {
        {IDB_DOC_START_FEED_CUT, IDB_DOC_START_FEED, IDB_DOC_START_CUT, IDB_START_PLAIN},
        {IDB_PAGE_START_FEED_CUT, IDB_PAGE_START_FEED, IDB_PAGE_START_CUT, IDB_START_PLAIN},
        {IDB_PAGE_END_FEED_CUT, IDB_PAGE_END_FEED, IDB_PAGE_END_CUT, IDB_END_PLAIN},
        {IDB_DOC_END_FEED_CUT, IDB_DOC_END_FEED, IDB_DOC_END_CUT, IDB_END_PLAIN},
    };
    const int column = (feedToPosition ? 0 : 2) + (cut ? 0 : 1);
    return kBitmaps[static_cast<std::size_t>(moment)][column];
}

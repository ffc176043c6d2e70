#include "docpages/operation_preview.h"

#include <gtest/gtest.h>

namespace {

// Which picture the dialog shows: a row for each moment, as the artwork is numbered.
struct Row {
    Moment moment;
    int feedAndCut;
    int feed;
    int cut;
    int neither;
};
constexpr Row kRows[] = {
    {Moment::kDocStart, 143, 144, 145, 149},
    {Moment::kPageStart, 146, 147, 148, 149},
    {Moment::kPageEnd, 140, 141, 142, 139},
    {Moment::kDocEnd, 136, 137, 138, 139},
};

TEST(OperationPreview, ShowsThePictureOfTheMomentAndChoice) {
    for (const Row& row : kRows) {
        EXPECT_EQ(OperationPreviewBitmap(row.moment, true, true), row.feedAndCut);
        EXPECT_EQ(OperationPreviewBitmap(row.moment, true, false), row.feed);
        EXPECT_EQ(OperationPreviewBitmap(row.moment, false, true), row.cut);
        EXPECT_EQ(OperationPreviewBitmap(row.moment, false, false), row.neither);
    }
}

}  // namespace

#include "foundation/ProgramCompilationStamp.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <string>
#include <vector>

namespace {

TEST(ProgramCompilationStamp, TakesOnlyTheCompilersFormsAndKeepsTheFieldsReadBeforeAFailure) {
    const wxLogNull quiet;  // every call traces its input
    const struct {
        bool date;
        std::string input;
        bool ok;
        std::vector<int> fields;
    } cases[] = {
        {false, "14:07:44", true, {14, 7, 44}},     {true, "Oct  2 2017", true, {10, 2, 2017}},
        {true, "Oct 02 2017", true, {10, 2, 2017}}, {false, std::string(100000, '1'), false, {-1, -1, -1}},
        {false, " 4:07:44", false, {-1, -1, -1}},   {false, "14:07:-4", false, {14, 7, -1}},
        {true, "oct 02 2017", false, {-1, -1, -1}}, {true, "Oct 2  2017", false, {10, -1, -1}},
        {true, "Oct  2 20x7", false, {10, 2, -1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input.substr(0, 20));
        int fields[3] = {-1, -1, -1};
        EXPECT_EQ(c.date ? GetDate(fields, c.input) : GetTime(fields, c.input), c.ok);
        EXPECT_EQ(std::vector<int>(fields, fields + 3), c.fields);
    }
    const std::string months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    for (int m = 0; m < 12; ++m) {
        int fields[3] = {};
        EXPECT_TRUE(GetDate(fields, months.substr(3 * m, 3) + " 31 1999") && fields[0] == m + 1) << m;
    }
}

}  // namespace

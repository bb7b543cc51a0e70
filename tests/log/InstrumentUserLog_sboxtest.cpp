// The user log at its fixed place in the code folder (sandbox only).
#include "log/InstrumentUserLog.h"

#include "foundation/InstrumentTime.h"
#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <unistd.h>

#include <string>

using vtxtest::ReadFile;

TEST(UserLogFile, AppendsToTheCodeFoldersUserLog) {
    const wxLogNull quiet;  // no debug copies on the console
    const std::string path = "/home/vtx/Code/UserLog.vtx";
    ASSERT_EQ(access("/home/vtx/Code", W_OK), 0) << "not inside the instrument sandbox";
    ASSERT_TRUE(vtxtest::WriteFile(path, "01012019 0000\told entry\r\n"));
    const std::string before = CInstrumentTime::Now().FormatSettings();
    AddUserLogEntry("Upgrade started");
    const std::string after = CInstrumentTime::Now().FormatSettings();
    const std::string content = ReadFile(path);
    EXPECT_TRUE(content == "01012019 0000\told entry\r\n" + before + "\tUpgrade started\r\n" ||
                content == "01012019 0000\told entry\r\n" + after + "\tUpgrade started\r\n")
        << content;
}

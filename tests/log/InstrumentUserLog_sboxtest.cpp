// The user log at its fixed place in the code folder (sandbox only).
#include "log/InstrumentUserLog.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "foundation/InstrumentTime.h"

namespace {

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(UserLogFile, AppendsToTheCodeFoldersUserLog) {
    const wxLogNull quiet;  // no debug copies on the console
    const std::string path = "/home/vtx/Code/UserLog.vtx";
    ASSERT_EQ(access("/home/vtx/Code", W_OK), 0) << "not inside the instrument sandbox";
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << "01012019 0000\told entry\r\n";
    }
    const std::string before = CInstrumentTime::Now().FormatSettings();
    AddUserLogEntry("Upgrade started\nfrom USB");
    const std::string after = CInstrumentTime::Now().FormatSettings();
    const std::string tail = "\t--- Multi-line ---\r\n -> Upgrade started\r\n -> from USB\r\n";
    const std::string content = ReadBytes(path);
    EXPECT_TRUE(content == "01012019 0000\told entry\r\n" + before + tail ||
                content == "01012019 0000\told entry\r\n" + after + tail)
        << content;

    // A user log that cannot be opened at all costs the entry, nothing else.
    std::remove(path.c_str());
    ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
    AddUserLogEntry("lost");
    ::rmdir(path.c_str());
    AddUserLogEntry("back");
    EXPECT_EQ(ReadBytes(path).substr(13), "\tback\r\n");
}

}  // namespace

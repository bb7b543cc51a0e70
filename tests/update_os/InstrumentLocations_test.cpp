#include "update/InstrumentLocations.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace {

using Getter = std::string (*)();

struct SLocation {
    const char* name;
    Getter getter;
    const char* value;
};

const std::vector<SLocation>& Locations() {
    static const std::vector<SLocation> locations = {
        {"ApplicationFolder", GetApplicationFolder, "/home/vtx/Code"},
        {"UserHomeFolder", GetUserHomeFolder, "/home/vtx"},
        {"UsbMountPoint", GetUsbMountPoint, "/media/usb"},
        {"CalibrationFolderName", GetCalibrationFolderName, "Calibration"},
        {"DataFolderName", GetDataFolderName, "data"},
        {"BrandFolderName", GetBrandFolderName, "pellam"},
        {"ProductFolderName", GetProductFolderName, "korvalin"},
        {"UpdateFolderName", GetUpdateFolderName, "update"},
        {"NewBuildFolderName", GetNewBuildFolderName, "NEW"},
        {"CheckDiskFolderName", GetCheckDiskFolderName, "CheckDisk"},
        {"UserManualFolderName", GetUserManualFolderName, "UserManual"},
        {"LicenceTextsFolderName", GetLicenceTextsFolderName, "Licences"},
        {"ChineseDictionaryFolderName", GetChineseDictionaryFolderName, "ChnDictData"},
        {"FontPackageFileName", GetFontPackageFileName, "jfonts.tgz"},
        {"FontFolder", GetFontFolder, "/home/vtx/jfonts"},
        {"DataFolder", GetDataFolder, "/home/vtx/Code/data"},
        {"SystemFolder", GetSystemFolder, "/home/vtx/WINDOWS"},
        {"SystemLibraryFolder", GetSystemLibraryFolder, "/home/vtx/WINDOWS/system32"},
        {"ChineseDictionaryFolder", GetChineseDictionaryFolder, "/home/vtx/Code/ChnDictData"},
        {"HistoryFile", GetHistoryFile, "/home/vtx/Code/history.vtx"},
        {"UserLogFile", GetUserLogFile, "/home/vtx/Code/UserLog.vtx"},
        {"CalibrationLogFile", GetCalibrationLogFile, "/home/vtx/Code/CalibLog.vtx"},
        {"UsbCalibrationTable", GetUsbCalibrationTable, "/media/usb/CalibTable.csv"},
        {"UserManual", GetUserManual, "/home/vtx/Code/UserManual/Korvalin-manual.html"},
    };
    return locations;
}

}  // namespace

TEST(InstrumentLocations, EveryGetterHasItsFixedValue) {
    EXPECT_EQ(GetPathSeparator(), "/");
    for (const SLocation& location : Locations()) {
        EXPECT_EQ(location.getter(), location.value) << location.name;
    }
    EXPECT_STREQ(kLogFilePattern, "*.log");
    EXPECT_STREQ(kManualArchiveName, "Korvalin-manual.zip");
}

TEST(InstrumentLocations, PathsHaveNoDoubledOrTrailingSeparator) {
    for (const SLocation& location : Locations()) {
        const std::string path = location.getter();
        EXPECT_EQ(path.find("//"), std::string::npos) << location.name;
        ASSERT_FALSE(path.empty()) << location.name;
        EXPECT_NE(path.back(), '/') << location.name;
    }
}

TEST(InstrumentLocations, FileNamesTakeTheExeFormBelowOne) {
    for (int version : {1, 2, 100, INT_MAX}) {
        EXPECT_EQ(GetApplicationFileName(version), "Application") << version;
        EXPECT_EQ(GetUpdateProgramFileName(version), "update") << version;
    }
    for (int version : {0, -1, INT_MIN}) {
        EXPECT_EQ(GetApplicationFileName(version), "Application.exe") << version;
        EXPECT_EQ(GetUpdateProgramFileName(version), "update.exe") << version;
    }
}

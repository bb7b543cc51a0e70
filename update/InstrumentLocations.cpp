#include "update/InstrumentLocations.h"

namespace {

// Built on first use rather than as a namespace-scope object, so that objects registering
// themselves during static construction can already compose paths.
const std::string& Separator() {
    static const std::string separator("/");
    return separator;
}

std::string Join(const std::string& folder, const std::string& name) {
    return folder + Separator() + name;
}

}  // namespace

std::string GetPathSeparator() { return Separator(); }

std::string GetApplicationFolder() { return Join(GetUserHomeFolder(), "Code"); }
std::string GetUserHomeFolder() { return Separator() + "home" + Separator() + "vtx"; }
std::string GetUsbMountPoint() { return Separator() + "media" + Separator() + "usb"; }

std::string GetCalibrationFolderName() { return "Calibration"; }
std::string GetDataFolderName() { return "data"; }
std::string GetBrandFolderName() { return "pellam"; }
std::string GetProductFolderName() { return "korvalin"; }
std::string GetUpdateFolderName() { return "update"; }
std::string GetNewBuildFolderName() { return "NEW"; }
std::string GetCheckDiskFolderName() { return "CheckDisk"; }
std::string GetUserManualFolderName() { return "UserManual"; }
std::string GetLicenceTextsFolderName() { return "Licences"; }
std::string GetChineseDictionaryFolderName() { return "ChnDictData"; }
std::string GetFontPackageFileName() { return "jfonts.tgz"; }
std::string GetFontFolder() { return Join(GetUserHomeFolder(), "jfonts"); }

std::string GetApplicationFileName(int version) { return version >= 1 ? "Application" : "Application.exe"; }
std::string GetUpdateProgramFileName(int version) { return version >= 1 ? "update" : "update.exe"; }

std::string GetDataFolder() { return Join(GetApplicationFolder(), GetDataFolderName()); }
std::string GetSystemFolder() { return Join(GetUserHomeFolder(), "WINDOWS"); }
std::string GetSystemLibraryFolder() { return Join(GetSystemFolder(), "system32"); }
std::string GetChineseDictionaryFolder() { return Join(GetApplicationFolder(), GetChineseDictionaryFolderName()); }
std::string GetHistoryFile() { return Join(GetApplicationFolder(), "history.vtx"); }
std::string GetUserLogFile() { return Join(GetApplicationFolder(), "UserLog.vtx"); }
std::string GetCalibrationLogFile() { return Join(GetApplicationFolder(), "CalibLog.vtx"); }
std::string GetUsbCalibrationTable() { return Join(GetUsbMountPoint(), "CalibTable.csv"); }
std::string GetUserManual() {
    return Join(Join(GetApplicationFolder(), GetUserManualFolderName()), "Korvalin-manual.html");
}

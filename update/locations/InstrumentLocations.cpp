#include "update/locations/InstrumentLocations.h"

namespace {

// A constant, in place before any code of the program runs: objects registering themselves
// during static construction can already compose paths.
constexpr char kSeparator[] = "/";

std::string Separator() { return kSeparator; }

std::string Join(const std::string& folder, const std::string& name) { return folder + Separator() + name; }

std::string Root(const char* first, const char* second) { return Separator() + first + Separator() + second; }

std::string ToolsFolder() { return Join(GetUserHomeFolder(), "bin"); }

// The file-name version that the instrument's own programs pass: from 1 on the names have no
// ".exe", which only the framework's ports to the other operating system used.
constexpr int kInstrumentFileNameVersion = 2;

std::string FirmwareFolder() { return Join(Join(Root("sys", "class"), "dmi"), "id"); }

}  // namespace

std::string GetPathSeparator() { return Separator(); }
std::string JoinPath(const std::string& folder, const std::string& name) { return Join(folder, name); }

std::string GetApplicationFolder() { return Join(GetUserHomeFolder(), "Code"); }
std::string GetUserHomeFolder() { return Root("home", "vtx"); }
std::string GetUsbMountPoint() { return Root("media", "usb"); }

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
std::string GetFontFolderName() { return "jfonts"; }
std::string GetFontFolder() { return Join(GetUserHomeFolder(), GetFontFolderName()); }

std::string GetApplicationFileName(int version) { return version >= 1 ? "Application" : "Application.exe"; }
std::string GetUpdateProgramFileName(int version) { return version >= 1 ? "update" : "update.exe"; }
std::string GetChineseApplicationFileName() { return GetInstrumentApplicationFileName() + "_Chinese"; }
std::string GetAuxiliaryFileName() { return "zip"; }
std::string GetRuntimeLibraryName() { return "libstdc++.so.6.0.22"; }

std::string GetDataFolder() { return Join(GetApplicationFolder(), GetDataFolderName()); }
std::string GetSystemFolder() { return Join(GetUserHomeFolder(), "WINDOWS"); }
std::string GetSystemLibraryFolder() { return Join(GetSystemFolder(), "system32"); }
std::string GetChineseDictionaryFolder() {
    return Join(GetApplicationFolder(), GetChineseDictionaryFolderName());
}
std::string GetHistoryFile() { return Join(GetApplicationFolder(), "history.vtx"); }
std::string GetUserLogFile() { return Join(GetApplicationFolder(), "UserLog.vtx"); }
std::string GetCalibrationLogFile() { return Join(GetApplicationFolder(), "CalibLog.vtx"); }
std::string GetUsbCalibrationTable() { return Join(GetUsbMountPoint(), "CalibTable.csv"); }
std::string GetUserManual() {
    return Join(Join(GetApplicationFolder(), GetUserManualFolderName()), "Korvalin-manual.html");
}
std::string GetFactoryQcFile() { return Join(GetApplicationFolder(), "FactoryQC.vtx"); }

std::string GetApplicationFile() { return Join(GetApplicationFolder(), GetInstrumentApplicationFileName()); }
std::string GetNewBuildFolder() { return Join(GetApplicationFolder(), GetNewBuildFolderName()); }
std::string GetBackupFolder() { return Join(GetApplicationFolder(), "Old"); }
std::string GetUsbUpdateFolder() { return Join(GetUsbMountPoint(), GetUpdateFolderName()); }
std::string GetChineseVariantMarker() { return Root("opt", "librime") + Separator(); }
std::string GetUpdateManifest() { return Join(GetUsbUpdateFolder(), "manifest"); }
std::string GetUpdateManifestSignature() { return GetUpdateManifest() + ".minisig"; }
std::string GetReleaseRecord() { return Join(GetApplicationFolder(), "release.manifest"); }
std::string GetUpdateKeysFolder() { return Join(Root("etc", "vtx"), "update-keys"); }

std::string GetRuntimeLibraryFolder() { return Join(Root("usr", "lib"), "i386-linux-gnu"); }
std::string GetRuntimeLibraryLinkName() { return "libstdc++.so.6"; }
std::string GetRuntimeLibraryLink() { return Join(GetRuntimeLibraryFolder(), GetRuntimeLibraryLinkName()); }
std::string GetRuntimeLibraryTarget() { return Join(GetRuntimeLibraryFolder(), GetRuntimeLibraryName()); }
std::string GetRootImageFolder() { return Root("mnt", "root-ro"); }

std::string GetPrivilegedTool() { return Join(ToolsFolder(), "VtxSecret"); }
std::string GetHostNameTool() { return Join(ToolsFolder(), "VtxHostname"); }
std::string GetFileSystemTableTool() { return Join(ToolsFolder(), "append_fstab"); }

// The root image is the running system's root, so each path of the system lies under it as is.
std::string GetRootImageRuntimeLibraryLink() { return GetRootImageFolder() + GetRuntimeLibraryLink(); }
std::string GetRootImageRuntimeLibraryTarget() { return GetRootImageFolder() + GetRuntimeLibraryTarget(); }

std::string GetShutdownTool() { return Root("sbin", "shutdown"); }
std::string GetInstrumentApplicationFileName() { return GetApplicationFileName(kInstrumentFileNameVersion); }
std::string GetFirmwareVendorFile() { return Join(FirmwareFolder(), "bios_vendor"); }
std::string GetFirmwareVersionFile() { return Join(FirmwareFolder(), "bios_version"); }

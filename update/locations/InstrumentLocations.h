#pragma once
// Every folder and file name the instrument software uses on its disk and on the USB stick.
// Nothing is read from disk or settings: the locations are fixed, and no other part spells a
// path itself.

#include <string>

// "/", the one separator every composed path is joined with.
std::string GetPathSeparator();
// folder, the separator, name.
std::string JoinPath(const std::string& folder, const std::string& name);

// Base folders.
std::string GetApplicationFolder();  // "/home/vtx/Code"
std::string GetUserHomeFolder();     // "/home/vtx"
std::string GetUsbMountPoint();      // "/media/usb"

// Plain names.
std::string GetCalibrationFolderName();
std::string GetDataFolderName();
std::string GetBrandFolderName();
std::string GetProductFolderName();
std::string GetUpdateFolderName();
std::string GetNewBuildFolderName();
std::string GetCheckDiskFolderName();
std::string GetUserManualFolderName();
std::string GetLicenceTextsFolderName();
std::string GetChineseDictionaryFolderName();
std::string GetFontPackageFileName();
std::string GetFontFolderName();  // "jfonts", the only folder a font package may fill
std::string GetFontFolder();

// version below 1 selects the ".exe" form.
std::string GetApplicationFileName(int version);
std::string GetUpdateProgramFileName(int version);
std::string GetChineseApplicationFileName();  // "Application_Chinese", the build for /opt/librime/
std::string GetAuxiliaryFileName();           // "zip"
std::string GetRuntimeLibraryName();          // "libstdc++.so.6.0.22", the runtime the builds need

// Composed paths.
std::string GetDataFolder();
std::string GetSystemFolder();
std::string GetSystemLibraryFolder();
std::string GetChineseDictionaryFolder();
std::string GetHistoryFile();
std::string GetUserLogFile();
std::string GetCalibrationLogFile();
std::string GetUsbCalibrationTable();
std::string GetUserManual();
std::string GetFactoryQcFile();  // "/home/vtx/Code/FactoryQC.vtx"

// The update's places.
std::string GetApplicationFile();       // "/home/vtx/Code/Application"
std::string GetNewBuildFolder();        // "/home/vtx/Code/NEW"
std::string GetBackupFolder();          // "/home/vtx/Code/Old"
std::string GetUsbUpdateFolder();       // "/media/usb/update"
std::string GetChineseVariantMarker();  // "/opt/librime/", a folder that exists on Chinese instruments
// Signed updates.
std::string GetUpdateManifest();           // "/media/usb/update/manifest"
std::string GetUpdateManifestSignature();  // that, ".minisig"
std::string GetReleaseRecord();            // "/home/vtx/Code/release.manifest", the release installed last
std::string GetUpdateKeysFolder();         // "/etc/vtx/update-keys", in the read-only root image

// The operating system's runtime library, and the root image it is installed from.
std::string GetRuntimeLibraryFolder();    // "/usr/lib/i386-linux-gnu"
std::string GetRuntimeLibraryLinkName();  // "libstdc++.so.6", also the runtime's SONAME
std::string GetRuntimeLibraryLink();      // that folder, "libstdc++.so.6"
std::string GetRuntimeLibraryTarget();    // that folder, GetRuntimeLibraryName()
std::string GetRootImageFolder();         // "/mnt/root-ro", mounted read-only

// The instrument's own tools.
std::string GetPrivilegedTool();       // "/home/vtx/bin/VtxSecret": runs its one argument with full rights
std::string GetHostNameTool();         // "/home/vtx/bin/VtxHostname"
std::string GetFileSystemTableTool();  // "/home/vtx/bin/append_fstab"

// The runtime library's link and target as the root image holds them, under GetRootImageFolder().
std::string GetRootImageRuntimeLibraryLink();    // "/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6"
std::string GetRootImageRuntimeLibraryTarget();  // the same with GetRuntimeLibraryName()

// The system's tools and files the framework reads or runs.
std::string GetShutdownTool();                   // "/sbin/shutdown"
std::string GetInstrumentApplicationFileName();  // "Application": the name on the instrument, never ".exe"
std::string GetFirmwareVendorFile();             // "/sys/class/dmi/id/bios_vendor"
std::string GetFirmwareVersionFile();            // "/sys/class/dmi/id/bios_version"

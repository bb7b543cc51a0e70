#pragma once
// Every folder and file name the instrument software uses on its disk and on the USB stick.
// Nothing is read from disk or settings: the locations are fixed, and no other part spells a
// path itself.

#include <string>

// Matches the instrument's update log files in the application folder.
inline constexpr const char kLogFilePattern[] = "*.log";
inline constexpr const char kManualArchiveName[] = "Korvalin-manual.zip";

// "/", the one separator every composed path is joined with.
std::string GetPathSeparator();

// Base folders.
std::string GetApplicationFolder();   // "/home/vtx/Code"
std::string GetUserHomeFolder();      // "/home/vtx"
std::string GetUsbMountPoint();       // "/media/usb"

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
std::string GetFontFolder();

// version below 1 selects the ".exe" form.
std::string GetApplicationFileName(int version);
std::string GetUpdateProgramFileName(int version);

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

#include "update/os/ShellCommands.h"

#include <cstdio>

#include "update/locations/InstrumentLocations.h"

namespace {
std::string InDoubleQuotes(const std::string& text) {
    std::string quoted("\"");
    for (char c : text) {
        if (c == '"' || c == '\\' || c == '$' || c == '`') quoted += '\\';
        quoted += c;
    }
    quoted += '"';
    return quoted;
}
}  // namespace

namespace NS_ShellCommand {

std::string Copy(const std::string& from, const std::string& to) {
    return "cp " + InDoubleQuotes(from) + " " + InDoubleQuotes(to);
}

std::string Privileged(const std::string& command) { return GetPrivilegedTool() + " \"" + command + "\""; }

std::string PrivilegedReboot() { return GetPrivilegedTool() + " reboot"; }

std::string SetHostName(const std::string& name) { return GetHostNameTool() + " " + name; }

std::string RemountWritable(const std::string& mountPoint) { return "mount -o remount,rw " + mountPoint; }

std::string CopyPlain(const std::string& from, const std::string& to) { return "cp " + from + " " + to; }

std::string LinkSymbolic(const std::string& target, const std::string& link) {
    return "ln -sf " + target + " " + link;
}

std::string AppendShareToFileSystemTable(const std::string& server, const std::string& sharePath,
                                         const std::string& mountPoint, const std::string& userName,
                                         const std::string& password) {
    std::string share;
    for (char c : sharePath) {
        if (c == ' ') {
            share += "\\040";
        } else {
            share += c;
        }
    }
    return GetFileSystemTableTool() + " '//" + server + "/" + share + " " + mountPoint + " cifs username=" +
           userName + ",password=" + password + ",noauto,user,rw 0 0'";
}

std::string Mount(const std::string& mountPoint) { return "mount " + mountPoint; }

std::string Shutdown(const std::string& program, int mode) {
    return program + " " + (mode == 2 ? "-r" : "-P") + " now ''";
}

std::string SetSystemClock(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                           unsigned second) {
    // Padded with blanks, not zeros, as the instrument has always set its clock.
    char command[96];
    std::snprintf(command, sizeof command, "date -s \"%4u-%2u-%2u %2u:%2u:%2u\"", year, month, day, hour, minute,
                  second);
    return command;
}

std::string Beep(unsigned frequency, unsigned length) {
    return "beep -f " + std::to_string(frequency) + " -l " + std::to_string(length);
}

std::string LibraryCheck(const std::string& build) {
    return "[[ $(ldd " + build + " | grep not | wc -l) -eq 0 ]]";
}

std::string UnpackFontPackage(const std::string& folder, const std::string& package) {
    return "cd " + folder + "; tar xzf " + package;
}

}  // namespace NS_ShellCommand

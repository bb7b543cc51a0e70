#include "update/os/ShellCommands.h"

#include <cstdio>
#include <initializer_list>

#include "update/locations/InstrumentLocations.h"

namespace {

enum class eQuotes { WhenNeeded, Double };

bool IsPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string("/._-:,=+").find(c) != std::string::npos;
}

// The one rule of the header: the word as the shell will read it back.
std::string Word(const std::string& text, eQuotes quotes = eQuotes::WhenNeeded) {
    if (quotes == eQuotes::Double) {
        std::string quoted("\"");
        for (char c : text) {
            if (c == '"' || c == '\\' || c == '$' || c == '`') quoted += '\\';
            quoted += c;
        }
        return quoted + '"';
    }
    bool plain = !text.empty();
    for (char c : text) plain = plain && IsPlain(c);
    if (plain) return text;
    std::string quoted("'");
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string Words(std::initializer_list<std::string> words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + Word(word);
    return line;
}

}  // namespace

namespace NS_ShellCommand {

std::string Copy(const std::string& from, const std::string& to) {
    return "cp " + Word(from, eQuotes::Double) + " " + Word(to, eQuotes::Double);
}

std::string Privileged(const std::string& command) {
    return Word(GetPrivilegedTool()) + " " + Word(command, eQuotes::Double);
}

std::string PrivilegedReboot() { return Words({GetPrivilegedTool(), "reboot"}); }

std::string SetHostName(const std::string& name) { return Words({GetHostNameTool(), name}); }

std::string RemountWritable(const std::string& mountPoint) {
    return Words({"mount", "-o", "remount,rw", mountPoint});
}

std::string CopyPlain(const std::string& from, const std::string& to) { return Words({"cp", from, to}); }

std::string LinkSymbolic(const std::string& target, const std::string& link) {
    return Words({"ln", "-sf", target, link});
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
    return Words({GetFileSystemTableTool(), "//" + server + "/" + share + " " + mountPoint + " cifs username=" +
                                                userName + ",password=" + password + ",noauto,user,rw 0 0"});
}

std::string Mount(const std::string& mountPoint) { return Words({"mount", mountPoint}); }

std::string Shutdown(const std::string& program, int mode) {
    return Words({program, mode == 2 ? "-r" : "-P", "now", ""});
}

std::string SetSystemClock(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                           unsigned second) {
    // Padded with blanks, not zeros, as the instrument has always set its clock.
    char time[64];
    std::snprintf(time, sizeof time, "%4u-%2u-%2u %2u:%2u:%2u", year, month, day, hour, minute, second);
    return "date -s " + Word(time, eQuotes::Double);
}

std::string Beep(unsigned frequency, unsigned length) {
    return Words({"beep", "-f", std::to_string(frequency), "-l", std::to_string(length)});
}

std::string LibraryCheck(const std::string& build) {
    return "[[ $(" + Words({"ldd", build}) + " | grep not | wc -l) -eq 0 ]]";
}

std::string UnpackFontPackage(const std::string& folder, const std::string& package) {
    return Words({"cd", folder}) + "; " + Words({"tar", "xzf", package});
}

}  // namespace NS_ShellCommand

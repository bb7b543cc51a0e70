#pragma once
// Every command line that the program hands to the shell, in one place, so that a reader sees at
// once which argument gets which treatment and why. The treatments differ on purpose: each is what
// the program at the other end has always been given, and only text from outside the program is
// escaped.

#include <string>

namespace NS_ShellCommand {

// cp with both names in double quotes, ", \, $ and ` escaped inside them: names come from outside
// (a log named by another program, the files of a stick), and none may end the quoting or run a
// command. Ordinary paths come out unchanged.
std::string Copy(const std::string& from, const std::string& to);

// The privileged tool runs its one argument as a command: that command in plain double quotes,
// not escaped. The commands are fixed texts of this program without a double quote of their own.
std::string Privileged(const std::string& command);
// "reboot" is a word of the privileged tool itself, given bare.
std::string PrivilegedReboot();

// What the operating-system update has the privileged tool run, on fixed paths of the instrument
// and the stick, bare: the root image remounted writable, the runtime copied into it, and its link
// pointed at the runtime.
std::string RemountWritable(const std::string& mountPoint);
std::string CopyPlain(const std::string& from, const std::string& to);
std::string LinkSymbolic(const std::string& target, const std::string& link);

// The host-name tool takes the name bare, as the instrument's set-up dialog has always passed it.
std::string SetHostName(const std::string& name);
// The file-system table tool takes the share's whole table line in single quotes, not escaped:
// the line is made of site configuration and the share's own names; a blank in the share path is
// written \040, as the table wants it.
std::string AppendShareToFileSystemTable(const std::string& server, const std::string& sharePath,
                                         const std::string& mountPoint, const std::string& userName,
                                         const std::string& password);
// Paths of the instrument, bare: they hold no blank and no character the shell would read.
std::string Mount(const std::string& mountPoint);
std::string Shutdown(const std::string& program, int mode);

// Numbers only.
std::string SetSystemClock(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                           unsigned second);
std::string Beep(unsigned frequency, unsigned length);

// The update's library check of a new build: its exit status is 0 when no library is missing,
// which the procedure reads in the inverted sense it has always had.
std::string LibraryCheck(const std::string& build);
// The font package unpacked in its folder; what tar prints is collected.
std::string UnpackFontPackage(const std::string& folder, const std::string& package);

}  // namespace NS_ShellCommand

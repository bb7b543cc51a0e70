#pragma once
// Every command line that the program hands to the shell, in one place and under one rule, so that
// the shell reads back each word exactly as the program meant it, whatever a stick, a log name or a
// configuration puts into it:
//   - a word made only of letters, digits and / . _ - : , = + goes into the line as it is;
//   - any other word goes in single quotes, each ' in it written '\'';
//   - a word that the command has always carried in double quotes (cp's two names, the privileged
//     tool's command, the clock's time) keeps them, with a \ before each " \ $ ` inside.
// The words the program passes today are all of the first kind, or carry fixed quotes of their own,
// so their lines are the ones the instrument's tools have always been given.

#include <string>

namespace NS_ShellCommand {

std::string Copy(const std::string& from, const std::string& to);

// The privileged tool runs its one argument, a command line built here, as a command.
std::string Privileged(const std::string& command);
// "reboot" is a word of the privileged tool itself.
std::string PrivilegedReboot();

// What the operating-system update has the privileged tool run: the root image remounted writable,
// the runtime copied into it, and its link pointed at the runtime.
std::string RemountWritable(const std::string& mountPoint);
std::string CopyPlain(const std::string& from, const std::string& to);
std::string LinkSymbolic(const std::string& target, const std::string& link);

std::string SetHostName(const std::string& name);
// The share's whole file-system table line, one word; a blank in the share path is written \040, as
// the table wants it.
std::string AppendShareToFileSystemTable(const std::string& server, const std::string& sharePath,
                                         const std::string& mountPoint, const std::string& userName,
                                         const std::string& password);
std::string Mount(const std::string& mountPoint);
std::string Shutdown(const std::string& program, int mode);

std::string SetSystemClock(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                           unsigned second);
std::string Beep(unsigned frequency, unsigned length);

// The update's library check of a new build: its exit status is 0 when no library is missing,
// which the procedure reads in the inverted sense it has always had.
std::string LibraryCheck(const std::string& build);
// The font package unpacked in its folder; what tar prints is collected.
std::string UnpackFontPackage(const std::string& folder, const std::string& package);

}  // namespace NS_ShellCommand

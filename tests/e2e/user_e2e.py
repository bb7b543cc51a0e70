"""The update as the instrument's user (uid 1000, owning /home/vtx and the stick; root only in the
stand-in privileged tool), compared with its file steps done by the shell tools as that user in a
second sandbox: the same step fails, every file ends with the same content, mode, owner and group."""

from harness.checks import appended_lines, check, matches, outcome
from harness.as_user import USER, as_cp, chown, owned_by_user
from harness.instrument import (APPLICATION, BACKED, BACKED_UP, CODE, CURRENT, DONE, DONE_LOG, EXTRAS, FONTS, FRESH,
                                I386, INSTALL, INSTALLED, LOG, OS_COMMANDS, OS_UPDATE, RUNTIME_ON_STICK, SUCCESS,
                                SYSTEMS_CHECK)
from harness.promises import STICK_LOG, every_cut_point
from harness.sandbox import both, gone, link, put
from harness.scenarios import add
from powerloss_e2e import LOSSY


def add_user(name, doc, status, log_lines, state, stop=None, tweak=None, setup=None, log=LOG, build="Application",
             layout=(), sandbox=(), inside=None, **kw):
    """Run as the user: setup lays out files, which become the user's; tweak takes from the user what it names."""
    add("user_" + name, doc + " (as the user)",
        both(outcome(status, log_lines, state, **kw), as_cp("user_" + name, status, stop, log, build)),
        layout=layout, sandbox=["--user", "%d:%d" % USER] + list(sandbox), inside=inside,
        setup=both(*filter(None, (setup, owned_by_user, tweak))))


OLD_STICK_LOG = put(STICK_LOG, b"older log\r\n")

# ---- the update as on the instrument

add_user("happy_path", "auxiliary file, runtime link repaired through the privileged tool, font package, an "
         "older log on the stick", SUCCESS,
         ["P auxillary files copied"] + OS_UPDATE[1:] + ["remounted OS", "copied prerequisites to OS", "link changed"]
         + INSTALL + ["P Copying /media/usb/jfonts.tgz to /home/vtx", "P Application started"],
         dict(DONE, zip="complete", fonts="unpacked", runtime="replaced"), privileged=OS_COMMANDS + ["reboot"],
         layout=["--link", "wrong"], setup=both(EXTRAS, RUNTIME_ON_STICK, OLD_STICK_LOG))

# ---- replacing what the user may not write: cp is refused, and so is the update

add_user("application_of_root", "an Application of root's, mode 0755, in the user's code folder",
         "Disk error... (06)", CURRENT + BACKED, BACKED_UP, tweak=chown(APPLICATION, 0, 0, 0o755))
add_user("application_read_only", "a read-only Application (0555) of the user's", "Disk error... (06)",
         CURRENT + BACKED, BACKED_UP, tweak=chown(APPLICATION, *USER, mode=0o555))
add_user("stick_log_of_root", "the stick holds an older log of that name, root's", "Disk error... (13)", DONE_LOG,
         dict(INSTALLED, stick_log="unchanged"), setup=OLD_STICK_LOG, tweak=chown(STICK_LOG, 0, 0, 0o644))
# cp writes into a file it may write but not give the user, and so does the update: in place.
add_user("application_of_root_writable", "an Application of root's that everyone may write (0777)", SUCCESS,
         DONE_LOG, DONE, tweak=chown(APPLICATION, 0, 0, 0o777))
# Nor may the user give a group that is not one of the user's: written in place, as cp keeps the group.
add_user("application_group_foreign", "an Application of the user's, of root's group", SUCCESS, DONE_LOG, DONE,
         tweak=chown(APPLICATION, USER[0], 0, 0o775))
# cp writes the new build into Application, then Code/NEW cannot go: it is left empty.
add_user("code_folder_not_writable", "a code folder of root's with the user's Application and Old",
         "Disk error... (07)", CURRENT + BACKED, dict(BACKED_UP, application="new"), also=["/home/vtx/Code/NEW/"],
         setup=put(CODE + "/Old/Application_01012019_0000", b"an older backup"), tweak=chown(CODE, 0, 0, 0o755))

# ---- every other failure the user meets without root

add_user("code_01", "no application to back up", "Disk error... (01)", CURRENT, dict(FRESH, application="none"),
         stop="backup", setup=gone(APPLICATION))
add_user("application_folder", "a folder named Application", "Disk error... (01)", CURRENT,
         dict(FRESH, application="none"), stop="backup", setup=both(gone(APPLICATION), put(APPLICATION + "/x", b"")))
# The file test lists a link as a file: the copy of what it leads to fails.
for _kind, _doc, _target in (("folder", "a link named Application, to a folder", CODE + "/NEW"),
                             ("dangling", "a dangling link named Application", CODE + "/gone")):
    add_user("application_link_" + _kind, _doc, "Disk error... (04)", CURRENT, FRESH,
             setup=both(gone(APPLICATION), link(APPLICATION, _target)))
add_user("code_03", "the user may not write the code folder, which has no backup folder", "Disk error... (03)",
         CURRENT, FRESH, tweak=chown(CODE, 0, 0, 0o755))
add_user("code_04", "a backup folder of root's", "Disk error... (04)", CURRENT, FRESH,
         setup=put(CODE + "/Old/Application_01012019_0000", b"an older backup"), tweak=chown(CODE + "/Old", 0, 0))
add_user("new_folder_part_of_root", "the new-build folder holds a folder of root's", "Disk error... (07)",
         CURRENT + BACKED, dict(BACKED_UP, application="new"), also=[CODE + "/NEW/"],
         setup=put(CODE + "/NEW/lib/libextra.so", b"library"), tweak=chown(CODE + "/NEW/lib", 0, 0, 0o755))
add_user("code_08", "a code folder the user cannot list", "Disk error... (08)/home/vtx/Code/", None, FRESH,
         stop="aux", log=None, tweak=chown(CODE, *USER, mode=0o311))
add_user("code_10", "a log file the user may not write", "Disk error... (10)", [], FRESH,
         tweak=chown(LOG, 0, 0, 0o644))
add_user("code_14", "Chinese build whose library check answers 0 (bash as /bin/sh)", "Disk error... (14)",
         CURRENT + BACKED, BACKED_UP, stop="install", layout=["--chinese"], sandbox=["--sh", "bash"])
add_user("code_15", "library check answers 0 (bash as /bin/sh)", "Disk error... (15)", CURRENT + BACKED, BACKED_UP,
         stop="install", sandbox=["--sh", "bash"])
if not I386:  # where the missing link leaves the program without its runtime (update_e2e's code_16)
    add_user("code_16", "the runtime link cannot be read", "Disk error... (16)",
             SYSTEMS_CHECK[:2] + ["FAIL - cannot read link version", "Contact service!"], FRESH, stop="backup",
             layout=["--link", "missing"])
add_user("stick_read_only", "a read-only stick", "Disk error... (13)", DONE_LOG, INSTALLED,
         inside="read_only /media/usb\n")
for _i, _fail in ((1, ["FAIL - cannot copy prerequisites to OS"]),
                  (2, ["copied prerequisites to OS", "FAIL - cannot link prerequisites"])):
    add_user("code_18_%s_refused" % ("copy", "link")[_i - 1], "the privileged tool fails to change the root image",
             "Disk error... (18)", OS_UPDATE + ["remounted OS"] + _fail, FRESH, stop="backup",
             privileged=OS_COMMANDS[:_i + 1], also=["/mnt/root-ro/"], layout=["--link", "wrong"],
             setup=both(RUNTIME_ON_STICK, lambda run, i=_i: run.record("privileged.fail", OS_COMMANDS[i] + "\n")))
add_user("auxiliary_refused", "an auxiliary file on the stick, a code folder of root's", "Could not copy file(s): "
         "auxillary files", ["P could not copy auxillary files"], FRESH, setup=put("/media/usb/update/zip", b"aux\n"),
         tweak=chown(CODE, 0, 0, 0o755))
add_user("fonts_refused", "a font package on the stick, a home folder of root's", "Could not copy file(s): font "
         "package", CURRENT + INSTALL + ["P Copying /media/usb/jfonts.tgz to /home/vtx", "P could not copy font "
                                         "package"], INSTALLED, setup=FONTS, tweak=chown("/home/vtx/", 0, 0, 0o755))
# The log opened for appending creates the file a dangling link names; that file is the log.
LINKED_LOG = CODE + "/logs/today.log"
add_user("log_link_dangling", "the only log is a dangling link", SUCCESS, None, dict(DONE, stick_log="none"),
         log=CODE + "/current.log", also=[LINKED_LOG, "/media/usb/current.log"],
         setup=both(gone(LOG), put(CODE + "/logs/keep", b""), link(CODE + "/current.log", LINKED_LOG)),
         more=lambda run: check(matches(appended_lines(run, LINKED_LOG, b""), DONE_LOG) and run.read(
             "/media/usb/current.log") == run.read(LINKED_LOG), "the log behind the link, or its copy, is not whole"))

# ---- a power cut at every operation of a full update as the user, on disks that lose what was
# not flushed (the same promises as for root's runs)

add_user("powerloss_everywhere", "power cut at every file-system operation of a full update, every crash state",
         SUCCESS, None, dict(DONE, zip="complete", fonts="unpacked", stick_log="complete", runtime="replaced"),
         privileged=OS_COMMANDS + ["reboot"], more=every_cut_point("Application"), layout=["--link", "wrong"],
         sandbox=["--lossy"], setup=LOSSY)

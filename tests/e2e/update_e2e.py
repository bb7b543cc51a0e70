"""End-to-end scenarios: the outcomes of the update (the machinery and the instrument's expected
lines and states are tools/harness's)."""

import os
import subprocess

from harness.checks import bar_is, cannot_start, check, outcome
from harness.instrument import (APPLICATION, BACKUP, CURRENT, DONE, DONE_LOG, EXTRAS,
                                FONT_HEAD, FONTS, FRESH, I386, INSTALL, INSTALLED, LOG, OS_COMMANDS, OS_UPDATE, RUNTIME,
                                RUNTIME_LINK, RUNTIME_ON_STICK, SUCCESS)
from harness.sandbox import both, gone, put
from harness.scenarios import add

EXTRAS_LOG = ["P auxillary files copied"] + DONE_LOG[1:-1] + ["P Copying /media/usb/jfonts.tgz to /home/vtx",
                                                              "P Application started"]
WITH_EXTRAS = dict(DONE, zip="complete", fonts="unpacked")

add("happy_path", "no auxiliary file, no font package, current runtime link", outcome(SUCCESS, DONE_LOG, DONE))
add("happy_path_extras", "auxiliary file and font package on the stick", outcome(SUCCESS, EXTRAS_LOG, WITH_EXTRAS),
    setup=EXTRAS)
add("german_failure_text", "status texts follow the language setting",
    outcome("Datenträgerfehler... (08)/home/vtx/Code/", None, FRESH, first="Kopiere Daten..."),
    setup=both(put("/home/vtx/Code/settings.vtx", "Language = DE\r\nDateFormat = EU\r\n"), gone(LOG)))
add("special_command_1", "the reduced update: no log, no auxiliary file, no fonts",
    outcome(SUCCESS, None, INSTALLED), setup=both(EXTRAS, gone(LOG)), args=["1", "1"])


def os_updated(run):
    check("Disk error... (17)" in run.statuses(), "code 17 was not shown during the OS update")
    check(os.readlink(run.path(RUNTIME_LINK)) == "/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22"
          and run.read(RUNTIME_LINK + ".0.22") == RUNTIME, "the runtime in the root image was not replaced")


def os_update(*more):
    return outcome(SUCCESS, OS_UPDATE + ["remounted OS", "copied prerequisites to OS", "link changed"] + INSTALL
                   + ["P Application started"], dict(DONE, runtime="replaced"), OS_COMMANDS + ["reboot"],
                   more=both(os_updated, *more))


add("wrong_link", "a link to another runtime: the OS is updated; the bar stays empty until the end",
    os_update(lambda run: bar_is(run, "empty", "screen-during.png"), lambda run: bar_is(run, "full")),
    layout=["--link", "wrong"],
    setup=both(RUNTIME_ON_STICK, lambda run: run.record("privileged.screenshot", OS_COMMANDS[0] + "\n")))

# ---- failures: each leaves the program on its screen with a full bar, and reboots nothing

# An application dated after 2038: backed up under that date, but taken for absent on the 32-bit PC.
STAMP_2040 = "/home/vtx/Code/Old/Application_01022040_1200"
add("application_dated_2040", "the application's date lies beyond a 32-bit time_t",
    outcome("Disk error... (01)", CURRENT, dict(FRESH, application="none")) if I386 else
    outcome(SUCCESS, [x.replace(BACKUP, STAMP_2040) for x in DONE_LOG], dict(DONE, backup="none"), also=[STAMP_2040],
            more=lambda run: check(run.files().get(STAMP_2040) == run.before[APPLICATION], "no backup of 2040")),
    setup=lambda run: subprocess.run(["touch", "-d", "2040-02-01 12:00", run.path(APPLICATION)], check=True))
add("code_08", "no log file directly in the code folder", outcome("Disk error... (08)/home/vtx/Code/", None, FRESH),
    setup=both(gone(LOG), put("/home/vtx/Code/logs/deeper.log", b"not directly in the code folder\r\n")))
if I386:  # elsewhere the program starts and shows 16: user_e2e's code_16
    add("code_16", "the runtime link cannot be read", cannot_start, layout=["--link", "missing"], killed=True)
add("code_18_mount_refused", "the root image cannot be remounted",
    outcome("Disk error... (18)", OS_UPDATE + ["FAIL - cannot mount OS"], FRESH, OS_COMMANDS[:1]),
    layout=["--link", "relative"],
    setup=both(RUNTIME_ON_STICK, lambda run: run.record("privileged.fail", OS_COMMANDS[0] + "\n")))
add("font_unpack_error", "the unpacking prints a complaint",
    outcome("Could not copy file(s): gzip: stdin: not in gzip format",
            FONT_HEAD + ["P Unpack error : gzip: stdin: not in gzip format"], dict(INSTALLED, fonts="complete")),
    setup=FONTS, path_stubs={"tar": "printf 'gzip: stdin: not in gzip format'\nexit 2\n"})

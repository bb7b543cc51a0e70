"""The simulated instrument and stick: their paths, the update log's expected lines, the states a
service engineer tells apart, and the stick contents and update keys the scenarios and tools lay out."""

import os
import platform
import shutil
import subprocess
import tempfile

import sign_update

from .sandbox import both, package, put, runtime_library

US_PREFIX = r"\d\d/\d\d/\d{4} \d\d:\d\d [AP]M"
EU_PREFIX = r"\d\d/\d\d/\d{4} \d\d:\d\d"
CODE, NEW, STICK = "/home/vtx/Code", "/home/vtx/Code/NEW", "/media/usb"
LOG = "/home/vtx/Code/instrument.log"
APPLICATION = "/home/vtx/Code/Application"
BACKUP = "/home/vtx/Code/Old/Application_05032019_1412"  # from the layout's time stamp, in local time
RUNTIME_LINK = "/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6"
PARTIAL = ".vtx-partial-copy"
KEYS = "/etc/vtx/update-keys/"
# The instrument's 32-bit PC: its runtime is behind the checked link; a date after 2038 does not fit.
# The architecture the program is built for: a cross build lists its scenarios on the build machine.
I386 = os.environ.get("VTX_E2E_ARCH", platform.machine()) in ("i386", "i686")
COPY_FOLDERS = ("/home/vtx/Code/", "/home/vtx/Code/Old/", "/home/vtx/", "/media/usb/")
SUCCESS = "Upgrade successful...\nRestarting application"
OS_COMMANDS = [
    "mount -o remount,rw /mnt/root-ro",
    "cp /media/usb/update/libstdc++.so.6.0.22 /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22",
    "ln -sf /usr/lib/i386-linux-gnu/libstdc++.so.6.0.22 /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6",
]
# Log lines; "P " stands for the date prefix (the blank after it is the log text's own).
SYSTEMS_CHECK = ["P no zip file on USB", "*** Performing systems check ***", "version read done"]
CURRENT = SYSTEMS_CHECK + ["version is correct, starting normal upgrade procedure"]
OS_UPDATE = SYSTEMS_CHECK + ["version incorrect - updating OS", "prerequisites exists on USB",
                             "prerequisites exists on disk"]
BACKED = ["P Old version backed up to " + BACKUP]
INSTALL = BACKED + ["P New version copied"]
DONE_LOG = CURRENT + INSTALL + ["P Application started"]
FONT_HEAD = CURRENT + INSTALL + ["P Copying /media/usb/jfonts.tgz to /home/vtx"]

# What a service engineer finds; a copy is "none", "complete" (as its source), "unchanged" or "partial".
FRESH = dict(application="old", backup="none", zip="none", fonts="none", stick_log="none", new_folder="present",
             runtime="old", partial_copy="none")
BACKED_UP = dict(FRESH, backup="complete")
INSTALLED = dict(BACKED_UP, application="new", new_folder="removed")
DONE = dict(INSTALLED, stick_log="complete")
STATE_FILES = {"application": [APPLICATION], "backup": ["/home/vtx/Code/Old/"], "zip": ["/home/vtx/Code/zip"],
               "fonts": ["/home/vtx/jfonts.tgz", "/home/vtx/jfonts/"], "stick_log": ["/media/usb/instrument.log"],
               "new_folder": ["/home/vtx/Code/NEW/"], "runtime": ["/mnt/root-ro/"]}

# What a stick may bring besides the new build.
RUNTIME = runtime_library()
FONTS = put("/media/usb/jfonts.tgz", package(("jfonts/ipag.ttf", b"stand-in font\n")))
EXTRAS = both(put("/media/usb/update/zip", b"auxiliary data\n"), FONTS)
RUNTIME_ON_STICK = put("/media/usb/update/libstdc++.so.6.0.22", RUNTIME)

_made = {}


def key(name):
    """A key pair made once per process: (public key file, secret key file)."""
    if name not in _made:
        folder = tempfile.mkdtemp(prefix="vtx-e2e-key-")
        subprocess.run(["minisign", "-G", "-W", "-p", folder + "/k.pub", "-s", folder + "/k.sec"], check=True,
                       stdout=subprocess.DEVNULL)
        _made[name] = (folder + "/k.pub", folder + "/k.sec")
    return _made[name]


def provisioned(*names):
    """The public keys in the root image, root's, as only root can put them there."""
    def setup(run):
        os.makedirs(run.path(KEYS), exist_ok=True)
        for name in names:
            shutil.copy(key(name)[0], run.path(KEYS + name + ".pub"))
    return setup


def signed(by="maker", product="korvalin", text=None):
    """The stick and the new build signed (text: a manifest of one's own, signed as it is)."""
    def setup(run):
        if text is None:
            sign_update.sign(key(by)[1], run.path(STICK), "2.1", run.path(NEW), product)
            return
        run.write(STICK + "/update/manifest", text)
        subprocess.run(["minisign", "-S", "-s", key(by)[1], "-m", run.path(STICK + "/update/manifest")], check=True,
                       stdout=subprocess.DEVNULL)
    return setup

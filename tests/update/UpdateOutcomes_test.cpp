// Every outcome of the update procedure, on a machine held in memory: what the screen shows last,
// the lines the log gains ("P" stands for the run's date prefix), every command run, and what was
// copied. The delivered program's own runs (tests/e2e) keep what needs real files and processes.
#include <gtest/gtest.h>
#include <sodium.h>

#include <cstdio>
#include <ctime>
#include <functional>

#include "foundation/InstrumentSettings.h"
#include "tests/update/FakeSystem.h"
#include "tests/update/RecordingScreen.h"
#include "update/Update.h"
#include "update/locations/InstrumentLocations.h"

namespace {

using Arrange = std::function<void(CFakeSystem&)>;
using Strings = std::vector<std::string>;

const std::string kCode = "/home/vtx/Code", kLog = kCode + "/instrument.log", kNew = kCode + "/NEW";
const std::string kStick = "/media/usb", kAux = kStick + "/update/zip", kFonts = kStick + "/jfonts.tgz";
const std::string kRuntime = kStick + "/update/libstdc++.so.6.0.22", kKeys = "/etc/vtx/update-keys";
const std::string kSuccess = "Upgrade successful...\nRestarting application";
const std::string kBackup = kCode + "/Old/Application_05032019_1412";
const std::string kCheck = "[[ $(ldd " + kNew + "/Application | grep not | wc -l) -eq 0 ]]";
const std::string kReboot = "/home/vtx/bin/VtxSecret reboot";
const std::string kTar = "cd /home/vtx; tar xzf jfonts.tgz";
const Strings kOsCommands = {
    "/home/vtx/bin/VtxSecret \"mount -o remount,rw /mnt/root-ro\"",
    "/home/vtx/bin/VtxSecret \"cp " + kRuntime + " /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22\"",
    "/home/vtx/bin/VtxSecret \"ln -sf /usr/lib/i386-linux-gnu/libstdc++.so.6.0.22 "
    "/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6\""};

const Strings kSystemsCheck = {"P no zip file on USB", "*** Performing systems check ***", "version read done"};
const Strings kCurrent = {"*** Performing systems check ***", "version read done",
                          "version is correct, starting normal upgrade procedure"};
const Strings kOsUpdate = {"*** Performing systems check ***", "version read done",
                           "version incorrect - updating OS",  "prerequisites exists on USB",
                           "prerequisites exists on disk",     "remounted OS",
                           "copied prerequisites to OS",       "link changed"};
const Strings kInstall = {"P Old version backed up to " + kBackup, "P New version copied"};

Strings Join(std::initializer_list<Strings> parts) {
    Strings all;
    for (const Strings& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// An input as the end-to-end runs' harness makes it: a runtime library, a font package.
std::string Fixture(const std::string& what) {
    const std::string command = "/usr/bin/python3 " VTX_SOURCE_DIR "/tools/harness/fixture.py " + what;
    std::string bytes;
    FILE* made = popen(command.c_str(), "r");
    char buffer[4096];
    for (size_t n; made != nullptr && (n = fread(buffer, 1, sizeof buffer, made)) > 0;) bytes.append(buffer, n);
    EXPECT_TRUE(made != nullptr && pclose(made) == 0 && !bytes.empty()) << command;
    return bytes;
}

// Minisign's formats, made with the library the instrument verifies with.
struct SKeyPair {
    unsigned char pk[32], sk[64];
    std::string id;
};
std::string Base64(const std::string& bytes) {
    std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(&text[0], text.size(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                      sodium_base64_VARIANT_ORIGINAL);
    return text.c_str();
}
SKeyPair MakeKey(char id) {
    SKeyPair key;
    crypto_sign_keypair(key.pk, key.sk);
    key.id = std::string(8, id);
    return key;
}
std::string PublicKeyFile(const SKeyPair& key) {
    return "untrusted comment: minisign public key\n" +
           Base64("Ed" + key.id + std::string(key.pk, key.pk + 32)) + "\n";
}
std::string SignatureFile(const SKeyPair& key, const std::string& message) {
    unsigned char hash[64], signature[64], global[64];
    crypto_generichash(hash, sizeof hash, reinterpret_cast<const unsigned char*>(message.data()), message.size(),
                       nullptr, 0);
    crypto_sign_detached(signature, nullptr, hash, sizeof hash, key.sk);
    const std::string trusted = "timestamp:1800000000\tfile:manifest";
    const std::string both = std::string(signature, signature + 64) + trusted;
    crypto_sign_detached(global, nullptr, reinterpret_cast<const unsigned char*>(both.data()), both.size(),
                         key.sk);
    return "untrusted comment: signature\n" + Base64("ED" + key.id + std::string(signature, signature + 64)) +
           "\ntrusted comment: " + trusted + "\n" + Base64(std::string(global, global + 64)) + "\n";
}

struct SOutcome {
    const char* name;
    Arrange arrange;
    std::string status;  // the screen's last text
    Strings log;         // the lines the log gains
    Strings commands;    // every command, in order
    Strings copies;      // every copy that took its name, in order ("from > to")
    Arrange verify = nullptr;
    int special = 0;  // the command line's special command
};

// The simulated instrument every row starts from: the running build, a new one, one log, a
// current runtime link, the privileged tool, an empty stick.
void Instrument(CFakeSystem& fake) {
    struct tm built = {};
    built.tm_mday = 5, built.tm_mon = 2, built.tm_year = 119, built.tm_hour = 14, built.tm_min = 12;
    built.tm_isdst = -1;
    fake.File(kLog, "old\r\n");
    fake.File(kCode + "/Application", "old build", mktime(&built));
    fake.File(kNew + "/Application", "new build");
    fake.Link(GetRuntimeLibraryLink(), GetRuntimeLibraryTarget());
    fake.File("/home/vtx/bin/VtxSecret", "tool");
    fake.Folder(kStick + "/update");
}

const SKeyPair& Maker() {
    static const SKeyPair key = MakeKey('m');
    return key;
}
const SKeyPair& Other() {
    static const SKeyPair key = MakeKey('o');
    return key;
}

// The maker's key provisioned, and a stick whose manifest lists the new build (and files) signed.
Arrange Signed(const std::string& manifest = std::string(), const SKeyPair& by = Maker(),
               const std::string& product = GetProductFolderName()) {
    return [=, &by](CFakeSystem& fake) {
        fake.File(kKeys + "/maker.pub", PublicKeyFile(Maker()));
        std::string text = "vtx-update-manifest 1\nproduct " + product + "\nrelease 2.1\n";
        for (const std::string& path : {kNew + "/Application", kAux, kFonts, kRuntime}) {
            if (!fake.Has(path)) continue;
            const SFileContent content = DigestBytes(fake.Bytes(path));
            const std::string listed = path.compare(0, kNew.size(), kNew) == 0 ? "NEW" + path.substr(kNew.size())
                                                                               : path.substr(kStick.size() + 1);
            text += std::to_string(content.size) + " " + content.sha256 + " " + listed + "\n";
        }
        if (!manifest.empty()) text = manifest;
        fake.File(kStick + "/update/manifest", text);
        fake.File(kStick + "/update/manifest.minisig", SignatureFile(by, text));
    };
}

Arrange All(std::initializer_list<Arrange> steps) {
    const std::vector<Arrange> list(steps);
    return [list](CFakeSystem& fake) {
        for (const Arrange& step : list) step(fake);
    };
}
Arrange Put(const std::string& path, const std::string& bytes) {
    return [=](CFakeSystem& fake) { fake.File(path, bytes); };
}
Arrange Gone(const std::string& path) {
    return [=](CFakeSystem& fake) { fake.nodes.erase(path); };
}
Arrange Failing(const std::string& operation, const std::string& cause) {
    return [=](CFakeSystem& fake) { fake.failing[operation] = cause; };
}
Arrange Status(const std::string& command, int status) {
    return [=](CFakeSystem& fake) { fake.statuses[command] = status; };
}
Arrange WrongLink() {
    return [](CFakeSystem& fake) { fake.Link(GetRuntimeLibraryLink(), "libstdc++.so.6.0.20"); };
}
Arrange Extras() {
    return All({Put(kAux, "auxiliary"), Put(kFonts, Fixture("fonts")),
                [](CFakeSystem& fake) { fake.Folder("/home/vtx/jfonts"); }});
}

const std::string kNotSigned = "Update not signed for this instrument... (19)";
const Strings kSignedHead = {"*** Checking update signature ***"};

// A signed stick refused: the reason on the log, nothing else done.
SOutcome Refused(const char* name, Arrange arrange, const std::string& why) {
    return {name, arrange, kNotSigned, {"*** Checking update signature ***", "FAIL - " + why}, {}, {}};
}

// The privileged tool refuses the n-th command of the operating-system update.
SOutcome Refusing(size_t n, const std::string& line) {
    const Strings done(kOsUpdate.begin() + 2, kOsUpdate.begin() + 5 + static_cast<long>(n));
    static const char* const names[] = {"(18) remount refused", "(18) runtime copy refused",
                                        "(18) link refused"};
    return {names[n],
            All({WrongLink(), Put(kRuntime, Fixture("runtime")), Status(kOsCommands[n], 1)}),
            "Disk error... (18)",
            Join({kSystemsCheck, done, {line}}),
            Strings(kOsCommands.begin(), kOsCommands.begin() + static_cast<long>(n) + 1),
            {}};
}

const Strings kCopied = {kNew + "/Application > " + kCode + "/Application"};
const Strings kBackedUp = {kCode + "/Application > " + kBackup};
const Strings kDone = {kCode + "/Application > " + kBackup, kNew + "/Application > " + kCode + "/Application",
                       kLog + " > " + kStick + "/instrument.log"};
const Strings kChecked = Join({kSystemsCheck, {kCurrent[2]}});
const Strings kBackupLog = Join({kChecked, {kInstall[0]}});
const Strings kFontHead = Join({kChecked, kInstall, {"P Copying " + kFonts + " to /home/vtx"}});
const Strings kExtrasHead =
    Join({{"P auxillary files copied"}, kCurrent, kInstall, {"P Copying " + kFonts + " to /home/vtx"}});
const Strings kDoneLog = Join({kChecked, kInstall, {"P Application started"}});
const Strings kFontCopies = Join({kBackedUp, kCopied, {kFonts + " > /home/vtx/jfonts.tgz"}});

const std::vector<SOutcome>& Outcomes() {
    static const std::vector<SOutcome> rows = {
        {"the plain update", nullptr, kSuccess, kDoneLog, {kCheck, "sync", kReboot}, kDone,
         [](CFakeSystem& fake) {
             EXPECT_EQ(fake.Bytes(kCode + "/Application"), "new build");
             EXPECT_EQ(fake.Bytes(kBackup), "old build");
             EXPECT_FALSE(fake.Has(kNew));
             EXPECT_EQ(fake.Bytes(kStick + "/instrument.log"), fake.Bytes(kLog));
         }},
        {"auxiliary file and fonts", Extras(), kSuccess,
         Join({kExtrasHead, {"P Application started"}}),
         {kCheck, kTar, "sync", kReboot},
         Join({{kAux + " > " + kCode + "/zip"}, kBackedUp, kCopied,
               {kFonts + " > /home/vtx/jfonts.tgz", kLog + " > " + kStick + "/instrument.log"}})},
        {"auxiliary file and fonts installed before", All({Extras(), Put(kCode + "/zip", "z"), Put("/home/vtx/jfonts.tgz", "f")}),
         kSuccess, Join({{"P zip already copied"}, kCurrent, kInstall, {"P Application started"}}),
         {kCheck, "sync", kReboot}, kDone},
        {"an equally new second log: the first listed", Put(kCode + "/a.log", ""), kSuccess, {},
         {kCheck, "sync", kReboot}, Join({kBackedUp, kCopied, {kCode + "/a.log > " + kStick + "/a.log"}}),
         [](CFakeSystem& fake) { EXPECT_EQ(fake.Bytes(kLog), "old\r\n"); }},
        {"runtime link wrong: the operating system updated", All({WrongLink(), Put(kRuntime, Fixture("runtime"))}),
         kSuccess, Join({{"P no zip file on USB"}, kOsUpdate, kInstall, {"P Application started"}}),
         Join({kOsCommands, {kCheck, "sync", kReboot}}), kDone},
        {"runtime link relative", All({Put(kRuntime, Fixture("runtime")), [](CFakeSystem& fake) {
              fake.Link(GetRuntimeLibraryLink(), GetRuntimeLibraryName());
          }}),
         kSuccess, Join({{"P no zip file on USB"}, kOsUpdate, kInstall, {"P Application started"}}),
         Join({kOsCommands, {kCheck, "sync", kReboot}}), kDone},
        {"(01) no application", Gone(kCode + "/Application"), "Disk error... (01)", kChecked,
         {}, {}},
        {"(03) no backup folder", Failing("mkdir", "no inode"), "Disk error... (03)",
         kChecked, {}, {}},
        {"(04) backup copy fails", Failing("copy " + kBackup, "disk full"), "Disk error... (04)",
         kChecked, {}, {}},
        {"(06) install copy fails", Failing("copy " + kCode + "/Application", "disk full"), "Disk error... (06)",
         kBackupLog, {kCheck}, kBackedUp},
        {"(06) new build a FIFO", [](CFakeSystem& fake) { fake.Fifo(kNew + "/Application"); }, "Disk error... (06)",
         kBackupLog, {}, kBackedUp},
        {"(07) new-build folder keeps a hidden file", Put(kNew + "/.hidden", ""), "Disk error... (07)",
         kBackupLog, {kCheck}, Join({kBackedUp, kCopied}),
         [](CFakeSystem& fake) { EXPECT_TRUE(fake.Has(kNew + "/.hidden")); }},
        {"(08) no log", Gone(kLog), "Disk error... (08)/home/vtx/Code/", {}, {}, {}},
        {"(08) the only log leads out", All({Gone(kLog), [](CFakeSystem& fake) {
              fake.Link(kCode + "/x.log", "/etc/passwd");
          }}), "Disk error... (08)/home/vtx/Code/", {}, {}, {}},
        {"(09) code folder unreadable", Failing("scan", "EIO"), "Disk error... (09)", {}, {}, {}},
        {"(10) log cannot be opened", Failing("log open", "read-only"), "Disk error... (10)", {}, {}, {}},
        {"(13) log copy fails", Failing("copy " + kStick + "/instrument.log", "stick full"), "Disk error... (13)",
         kDoneLog, {kCheck}, Join({kBackedUp, kCopied})},
        {"(13) log name with a backslash", [](CFakeSystem& fake) {
             fake.nodes.erase(kLog);
             fake.File(kCode + "/a\\x.log", "");
         }, "Disk error... (13)", {}, {kCheck}, Join({kBackedUp, kCopied})},
        {"(14) Chinese build's libraries missing", All({Status("[[", 0), [](CFakeSystem& fake) {
              fake.Folder("/opt/librime");
          }}), "Disk error... (14)", kBackupLog,
         {"[[ $(ldd " + kNew + "/Application_Chinese | grep not | wc -l) -eq 0 ]]"}, kBackedUp},
        {"(15) libraries missing", Status("[[", 0), "Disk error... (15)",
         kBackupLog, {kCheck}, kBackedUp},
        {"(16) runtime link unreadable", Gone(GetRuntimeLibraryLink()), "Disk error... (16)",
         {kSystemsCheck[0], kSystemsCheck[1], "FAIL - cannot read link version", "Contact service!"}, {}, {}},
        {"(18) no runtime on the stick", WrongLink(), "Disk error... (18)",
         Join({kSystemsCheck, {kOsUpdate[2], "FAIL - no prerequisites on USB"}}), {}, {}},
        {"(18) runtime on the stick for x86-64", All({WrongLink(), Put(kRuntime, Fixture("runtime 62"))}),
         "Disk error... (18)", Join({kSystemsCheck, {kOsUpdate[2], "FAIL - runtime on USB refused: not for x86"}}), {},
         {}},
        {"(18) privileged tool gone", All({WrongLink(), Put(kRuntime, Fixture("runtime")), Gone("/home/vtx/bin/VtxSecret")}),
         "Disk error... (18)", Join({kSystemsCheck, {kOsUpdate[2], kOsUpdate[3], "FAIL - no prerequisites on disk"}}),
         {}, {}},
        Refusing(0, "FAIL - cannot mount OS"),
        Refusing(1, "FAIL - cannot copy prerequisites to OS"),
        Refusing(2, "FAIL - cannot link prerequisites"),
        {"auxiliary file not copied", All({Put(kAux, "a"), Failing("copy " + kCode + "/zip", "full")}),
         "Could not copy file(s): auxillary files", {"P could not copy auxillary files"}, {}, {}},
        {"font package not copied", All({Put(kFonts, "f"), Failing("copy /home/vtx/jfonts.tgz", "full")}),
         "Could not copy file(s): font package",
         Join({kFontHead, {"P could not copy font package"}}),
         {kCheck}, Join({kBackedUp, kCopied})},
        {"font package leading out of its folder", Put(kFonts, Fixture("fonts jfontsx/profile")),
         "Could not copy file(s): font package unpack",
         Join({kFontHead, {"P font package refused: member jfontsx/profile lies outside jfonts/",
                "P could not unpack font package"}}),
         {kCheck}, kFontCopies,
         [](CFakeSystem& fake) { EXPECT_FALSE(fake.Has("/home/vtx/jfonts.tgz")); }},
        {"tar complains", All({Extras(), [](CFakeSystem& fake) { fake.printed["cd /home/vtx"] = "gzip: bad"; }}),
         "Could not copy file(s): gzip: bad",
         Join({kExtrasHead, {"P Unpack error : gzip: bad"}}),
         {kCheck, kTar}, Join({{kAux + " > " + kCode + "/zip"}, kFontCopies})},
        {"tar fails silently", All({Extras(), Status(kTar, 2)}), "Could not copy file(s): font package unpack",
         Join({kExtrasHead, {"P font package refused: tar ended with status 2",
                "P could not unpack font package"}}),
         {kCheck, kTar}, Join({{kAux + " > " + kCode + "/zip"}, kFontCopies})},
        {"tar leaves no font folder", All({Put(kFonts, Fixture("fonts"))}), "Could not copy file(s): font package unpack",
         Join({kFontHead, {"P could not unpack font package"}}),
         {kCheck, kTar}, kFontCopies},
        {"the log cannot be written: the update goes on", Failing("log write", "No space left on device"), kSuccess, {},
         {kCheck, "sync", kReboot}, kDone},
        {"the log cannot be closed: the update goes on", Failing("log close", "EIO"), kSuccess, kDoneLog,
         {kCheck, "sync", kReboot}, kDone},
        {"reboot refused: the success text stays", Status(kReboot, 1), kSuccess, kDoneLog, {kCheck, "sync", kReboot},
         kDone},
        {"signed: installed and recorded",
         All({WrongLink(), Put(kRuntime, Fixture("runtime")), Put(kAux, "a"), Signed()}), kSuccess,
         Join({kSignedHead, {"signed release 2.1 accepted", "P auxillary files copied"}, kOsUpdate, kInstall,
               {"release 2.1 recorded in " + kCode + "/release.manifest", "P Application started"}}),
         {kOsCommands[0],
          "/home/vtx/bin/VtxSecret \"cp /home/vtx/.vtx-checked-runtime "
          "/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22\"",
          kOsCommands[2], kCheck, "sync", kReboot},
         Join({{kAux + " > " + kCode + "/zip", kRuntime + " > /home/vtx/.vtx-checked-runtime"}, kDone}),
         [](CFakeSystem& fake) {
             EXPECT_EQ(fake.Bytes(kCode + "/release.manifest"), fake.Bytes(kStick + "/update/manifest"));
             EXPECT_EQ(fake.Bytes(kCode + "/release.manifest.minisig"), fake.Bytes(kStick + "/update/manifest.minisig"));
             EXPECT_FALSE(fake.Has("/home/vtx/.vtx-checked-runtime"));
         }},
        {"signed during a key change-over", All({Put(kKeys + "/new.pub", PublicKeyFile(Other())), Signed("", Other())}),
         kSuccess,
         Join({kSignedHead, {"signed release 2.1 accepted"}, kChecked, kInstall,
               {"release 2.1 recorded in " + kCode + "/release.manifest", "P Application started"}}),
         {kCheck, "sync", kReboot}, kDone},
        // Special command 1: no log at all (none is needed), no auxiliary file, no fonts.
        {"the reduced update", All({Gone(kLog), Extras()}), kSuccess, {}, {kCheck, "sync", kReboot},
         Join({kBackedUp, kCopied}), [](CFakeSystem& fake) { EXPECT_FALSE(fake.Has(kLog)); }, 1},
        {"the day-first date setting", [](CFakeSystem&) { GetSettingsItemDateFormat().Set(eDateFormatEU); }, kSuccess,
         kDoneLog, {kCheck, "sync", kReboot}, kDone},
        Refused("(19) no manifest", All({Signed(), Gone(kStick + "/update/manifest")}),
                "update not signed: no manifest: " + kStick + "/update/manifest"),
        Refused("(19) no signature", All({Signed(), Gone(kStick + "/update/manifest.minisig")}),
                "update not signed: no signature: " + kStick + "/update/manifest.minisig"),
        Refused("(19) another key", Signed("", Other()),
                "update not signed: signed by another key: " + kStick + "/update/manifest.minisig"),
        Refused("(19) new build changed", All({Signed(), Put(kNew + "/Application", "New build")}),
                "update not signed: differs from the manifest: " + kNew + "/Application"),
        Refused("(19) file not listed", All({Signed(), Put(kAux, "a")}), "update not signed: not listed: " + kAux),
        Refused("(19) listed file gone", All({Put(kAux, "a"), Signed(), Gone(kAux)}),
                "update not signed: listed but missing: " + kAux),
        Refused("(19) another product", Signed("", Maker(), "pellam"),
                "update not signed: for another product, pellam: " + kStick + "/update/manifest"),
        Refused("(19) manifest line too long",
                Signed("vtx-update-manifest 1\nproduct korvalin\nrelease 2.1\n1 " + std::string(64, '0') + " " +
                       std::string(4930, 'x') + "\n"),
                "update not signed: manifest line 4 too long: " + kStick + "/update/manifest"),
        Refused("(19) listed size too large",
                Signed("vtx-update-manifest 1\nproduct korvalin\nrelease 2.1\n9999999999999999 " + std::string(64, '0') +
                       " NEW/x\n"),
                "update not signed: manifest line 4 size too large: " + kStick + "/update/manifest"),
        Refused("(19) signature cut short",
                All({Signed(), [](CFakeSystem& fake) {
                         fake.File(kStick + "/update/manifest.minisig", fake.Bytes(kStick + "/update/manifest.minisig").substr(0, 120));
                     }}),
                "update not signed: malformed signature: " + kStick + "/update/manifest.minisig"),
        Refused("(19) a key file that is no key", All({Signed(), Put(kKeys + "/bad.pub", "untrusted comment: x\nno\n")}),
                "update key refused: not a key: " + kKeys + "/bad.pub"),
    };
    return rows;
}

class UpdateOutcome : public ::testing::TestWithParam<size_t> {};

TEST_P(UpdateOutcome, ScreenLogCommandsAndCopies) {
    const SOutcome& row = Outcomes()[GetParam()];
    CFakeSystem fake;
    Instrument(fake);
    if (row.arrange) row.arrange(fake);
    const std::string logBefore = fake.Bytes(kLog);
    CRecordingScreen screen;
    {
        CUpdateProcedure procedure(&screen, &fake);
        procedure.SetPauseMilliseconds(0);
        procedure.SetSpecialCommand(row.special);
        procedure.RunClosingSequence();
    }
    const bool dayFirst = GetSettingsItemDateFormat().IsDayFirst();
    GetSettingsItemDateFormat().ResetToDefault(0);
    ASSERT_FALSE(screen.texts.empty());
    EXPECT_EQ(screen.texts.front(), "Copying files...");
    EXPECT_EQ(screen.texts.back(), row.status);
    // The bar stays empty until the run's end fills it, whatever the outcome.
    ASSERT_EQ(screen.progress.size(), 1u);
    EXPECT_EQ(screen.progress[0].first, screen.progress[0].second);

    std::string expected;
    const std::string prefix = fake.now.FormatDateTime(dayFirst);
    for (const std::string& line : row.log)
        expected += (line.compare(0, 2, "P ") == 0 ? prefix + line.substr(1) : line) + "\r\n";
    EXPECT_EQ(fake.Bytes(kLog), logBefore.empty() ? std::string() : logBefore + expected);
    EXPECT_EQ(fake.commands, row.commands);
    EXPECT_EQ(fake.copies, row.copies);
    if (row.verify) row.verify(fake);
}

INSTANTIATE_TEST_SUITE_P(Table, UpdateOutcome, ::testing::Range<size_t>(0, Outcomes().size()),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                             std::string name = Outcomes()[info.param].name;
                             for (char& c : name)
                                 if (!isalnum(static_cast<unsigned char>(c))) c = '_';
                             return name;
                         });

}  // namespace

// The certificate commands and the 802.1x sequence of the real corvelcfg
// against the simulated printer's certificate manager: the exchanges each
// command makes, its output and exit status, and its failure paths.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

// "method" of each certificate-manager call, "kind" of every other request.
std::vector<std::string> requests(const SimRun& run)
{
    std::vector<std::string> names;
    for (const std::string& line : run.log) {
        const std::string kind = logValue(line, "kind");
        names.push_back(kind == "certmgr" ? logValue(line, "method") : kind);
    }
    return names;
}

// Runs a shell command in the test's directory (openssl, file set-up).
int shell(const SimDir& dir, const std::string& command)
{
    return std::system(("cd '" + dir.file("") + "' && { " + command + "; } >/dev/null 2>&1").c_str());
}

// A CA certificate "Test CA" with its key, made on the spot.
void makeCA(const SimDir& dir, const std::string& name = "ca")
{
    ASSERT_EQ(shell(dir, "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout " + name +
                             ".key -subj '/O=Test/CN=Test CA' -days 30 -out " + name + ".pem"),
              0);
}

// The README's walk from factory settings to an authenticated 802.1x network,
// run as written: what it prints must be its "#> " lines.
// Each walk-through of the README, run as written with the programs under
// test first on the PATH (as if installed), prints its "#> " lines.
TEST(ReadmeWalks, PrintWhatTheReadmeSays)
{
    const std::string source = PROJECT_SOURCE_DIR;
    const std::string programs = std::filesystem::path(CORVELCTL_PATH).parent_path().string() + ":" +
                                 std::filesystem::path(CORVELCFG_PATH).parent_path().string() + ":" +
                                 std::filesystem::path(CORVELSIM_PATH).parent_path().string();
    // The Ansible walk finds the collection in the source tree, as the README says.
    const std::string collections = "ANSIBLE_COLLECTIONS_PATH='" + source + "/ansible' ";
    for (const char* section : {"802.1x with certificates, step by step", "corvelctl, step by step",
                                "Many printers, many hosts, step by step"}) {
        SimDir dir;
        ASSERT_EQ(shell(dir, "'" + source + "/scripts/readme-walk.sh' '" + source + "/README.md' '" + section +
                                 "' > walk.sh && sed -n 's/^#> //p' walk.sh > expected.txt"),
                  0);
        const std::string expected = dir.read("expected.txt");
        ASSERT_FALSE(expected.empty()) << "no walk found in the README: " << section;
        SimRun walk = runCommand(dir, {"/bin/bash", "-c", collections + "PATH=" + programs + ":$PATH exec bash walk.sh"});
        ASSERT_FALSE(walk.timedOut) << section;
        EXPECT_EQ(walk.out, expected) << section << "\n" << walk.err;
        EXPECT_EQ(walk.status, 0) << section << "\n" << walk.err;
    }
}

// The text of `path` under the source tree, with its line breaks as blanks
// (roff and Markdown break sentences anywhere).
std::string documentText(const std::string& path)
{
    std::ifstream file(std::string(PROJECT_SOURCE_DIR) + "/" + path);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    for (char& c : text) c = c == '\n' ? ' ' : c;
    return text;
}

// What the README and the manual page give as the largest CA file -icer
// installs holds: over the libusb route a file of that size with a
// five-character name installs and one a byte larger does not fit its
// request; over the device node a file a little below the node's limit
// installs.
TEST(Certificates, CaFileLimitsTheDocumentsStateHold)
{
    const std::string readme = documentText("README.md");
    const std::string manual = documentText("man/corvelcfg.1.in");
    std::smatch stated, inManual;
    ASSERT_TRUE(
        std::regex_search(readme, stated, std::regex("up to ([0-9]+),([0-9]+) bytes installs with a five-character")));
    ASSERT_TRUE(
        std::regex_search(manual, inManual, std::regex("up to ([0-9]+) bytes installs with a five\\\\-character")));
    const size_t limit = std::stoul(stated[1].str() + stated[2].str());
    EXPECT_EQ(std::to_string(limit), inManual[1].str());

    SimDir dir;
    makeCA(dir);
    const std::string certificate = dir.read("ca.pem");
    // PEM allows text before the certificate: the file is padded with it.
    const auto writeOfSize = [&](size_t size) {
        std::string filler;
        while (filler.size() + certificate.size() < size)
            filler += std::string(std::min<size_t>(64, size - certificate.size() - filler.size() - 1), '#') + "\n";
        dir.write("c.pem", filler + certificate);
        return dir.read("c.pem").size();
    };
    const std::vector<std::string> usb = {"--usb", "001:004", "--no-lp"};
    ASSERT_EQ(writeOfSize(limit), limit);
    SimRun fits = runCorvelcfg(dir, usb, {"-icer", "--802-CA-cer-file=c.pem", "001:004"});
    EXPECT_EQ(fits.status, 0) << fits.err;
    EXPECT_EQ(requests(fits).back(), "uploadNewCAFile");

    ASSERT_EQ(writeOfSize(limit + 1), limit + 1);
    SimRun tooLarge = runCorvelcfg(dir, usb, {"-icer", "--802-CA-cer-file=c.pem", "001:004"});
    EXPECT_EQ(tooLarge.status, 1);
    EXPECT_TRUE(holds(tooLarge.err, "D [CVL] The uploadNewCAFile request does not fit its 16384-byte buffer!\n"))
        << tooLarge.err;

    ASSERT_EQ(writeOfSize(8000), 8000u);
    SimRun node = runCorvelcfg(dir, {}, {"-icer", "--802-CA-cer-file=c.pem"});
    EXPECT_EQ(node.status, 0) << node.err;
}

TEST(Certificates, CreateRequestGeneratesThenExportsAndFailsWithoutExport)
{
    SimDir dir;
    SimRun made = runCorvelcfg(dir, {}, {"-csr", "--cer-org=A&B <Lab>", "--cer-common=printer1", "--cer-path=p.csr"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(requests(made), (std::vector<std::string>{"deleteIndividualCert", "generateNewCert", "exportPubKey"}));
    ASSERT_EQ(made.log.size(), 3u);
    EXPECT_TRUE(holds(logValue(made.log[1], "raw"),
                      toHex("<child name=\"x509_O\"><StringElem>A&amp;B &lt;Lab&gt;</StringElem>")));

    SimRun refused = runCorvelcfg(dir, {"--fault", "cert-status=generateNewCert:5:key generation failed"},
                                  {"-csr", "--cer-common=printer2", "--cer-path=q.csr"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(requests(refused), (std::vector<std::string>{"deleteIndividualCert", "generateNewCert"}));
    EXPECT_TRUE(holds(refused.err, "D [CVL] Create Certificate Request error 5\nD [CVL] key generation failed\n"
                                   "D [CVL] Error creating Certificate Request!\n"))
        << refused.err;
    EXPECT_EQ(shell(dir, "test -e q.csr"), 256) << "no file without an export";

    SimRun unsaved = runCorvelcfg(dir, {}, {"-csr", "--cer-common=printer3"});
    EXPECT_EQ(unsaved.status, 1);
    EXPECT_TRUE(holds(unsaved.err, "D [CVL] Error saving Certificate Request to ''!\n")) << unsaved.err;
}

// Files refused before anything is sent, and files the printer refuses (a
// signed certificate for a key it never made, a CA that is no certificate).
TEST(Certificates, InstallRefusals)
{
    SimDir dir;
    makeCA(dir, "stranger");
    ASSERT_EQ(shell(dir, "touch empty.pem && head -c 16385 /dev/zero | tr '\\0' x > 16385.pem && "
                         "ln -s nowhere dangling.pem && echo 'just notes' > notes.txt"),
              0);
    // clang-format off
    const struct {
        const char* option;
        int status;
        std::vector<std::string> requests;
        std::string errLine;
    } cases[] = {
        {"--802-CA-cer-file=missing.pem", 2, {}, "D [CVL] File not found! ('missing.pem')\n"},
        {"--802-signed-cer-file=empty.pem", 1, {}, "D [CVL] Loading file empty.pem, 0 bytes\n"},
        // Refused at once: nothing read past the buffer.
        {"--802-CA-cer-file=16385.pem", 1, {},
         "D [CVL] Loading file 16385.pem, 16385 bytes\nD [CVL] Error installing CA/Signed Certificate!\n"},
        {"--802-CA-cer-file=dangling.pem", 1, {}, "D [CVL] Error installing CA/Signed Certificate!\n"},
        {"--802-CA-cer-file=notes.txt", 1, {"uploadNewCAFile"}, "D [CVL] Install CA Cert error "},
        {"--802-signed-cer-file=stranger.pem", 1, {"uploadSignedCertFile"}, "D [CVL] Install Signed Cert error "},
        {"--ssid=no-file", 1, {}, ""},
    };
    // clang-format on
    for (const auto& c : cases) {
        SimRun run = runCorvelcfg(dir, {}, {"-icer", c.option});
        EXPECT_EQ(run.status, c.status) << c.option << "\n" << run.err;
        EXPECT_EQ(requests(run), c.requests) << c.option;
        EXPECT_TRUE(holds(run.err, c.errLine)) << c.option << "\n" << run.err;
    }
}

// The clean answer's output is the README walk's first step; a missing
// envelope and silence are the unit tests' part.
TEST(Certificates, DefaultsWithE0InTheAnswer)
{
    SimDir dir;
    SimRun withE0 = runCorvelcfg(dir, {"--fault", "cert-e0=5"}, {"-rcerdefs"});
    EXPECT_EQ(withE0.status, 0) << "every 0xE0 is left out of the XML";
    EXPECT_EQ(withE0.out, "cer-org=Corvel Simulated Printers\ncer-unit=Printing\ncer-state=Oregon\ncer-country=US\n"
                          "cer-city=Portland\ncer-altname=corvelsim-0001.local\ncer-common=CORVELSIM-0001\n");
}

const std::vector<std::string> k8021x = {"-ca",
                                         "--security=802.1x",
                                         "--ssid=Corp",
                                         "--802-auth-ext=PEAP",
                                         "--802-auth-inner=MSCHAPv2",
                                         "--802-user=alice",
                                         "--802-pwd=pw"};

// A CA of the same name is deleted by its listed name, then uploaded; with
// a CA installed, refused 802.1x options are repeated whole in plain form.
TEST(Config8021x, CAReplacedThenRefusedOptionsRepeatedWholeInPlainForm)
{
    SimDir dir;
    makeCA(dir);
    ASSERT_EQ(runCorvelcfg(dir, {}, {"-icer", "--802-CA-cer-file=ca.pem"}).status, 0);
    SimRun again = runCorvelcfg(dir, {}, {"-icer", "--802-CA-cer-file=ca.pem", "--802-signed-cer-file=other.pem"});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(requests(again), (std::vector<std::string>{"queryCAList", "deleteIndividualCA", "uploadNewCAFile"}));
    ASSERT_EQ(again.log.size(), 3u);
    EXPECT_TRUE(holds(again.err, "D [CVL] CA cert exist! Removing...\n"));
    EXPECT_TRUE(holds(logValue(again.log[1], "raw"), toHex("<StringElem>Test CA_"))) << "deleted by its listed name";

    SimRun run = runCorvelcfg(dir, {"--fault", "refuse-envelope"}, k8021x);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(requests(run),
              (std::vector<std::string>{"queryCertList", "queryCAList", "settings", "read", "queryCertList",
                                        "queryCAList", "settings", "settings", "read"}));
    ASSERT_EQ(run.log.size(), 9u);
    EXPECT_EQ(logValue(run.log[2], "envelope"), "true");
    EXPECT_EQ(logValue(run.log[6], "envelope"), "false");
    EXPECT_TRUE(holds(logValue(run.log[6], "raw"), "2A2400000101")) << "a CA is installed: validate";
    EXPECT_TRUE(holds(run.err, "D [CVL] Setting 802.1x ret = -1\n"));
}

}  // namespace
}  // namespace e2e

// The atomic output file: what it refuses, and that a failed write leaves
// neither a part of the file nor its temporary behind.
#include "ctl/AtomicFile.h"
#include "ctl/Failure.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

using namespace corvelctl;

namespace {

struct TempFolder {
    TempFolder()
    {
        char name[] = "/tmp/corvelctlXXXXXX";
        path = mkdtemp(name);
    }
    ~TempFolder() { std::system(("rm -rf '" + path + "'").c_str()); }
    std::set<std::string> names() const
    {
        std::set<std::string> result;
        DIR* folder = opendir(path.c_str());
        while (const dirent* entry = readdir(folder)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") result.insert(name);
        }
        closedir(folder);
        return result;
    }
    std::string read(const std::string& name) const
    {
        std::ifstream file(path + "/" + name, std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        return content.str();
    }
    std::string path;
};

std::string outcome(const std::string& path, const std::string& content, bool force)
{
    try {
        writeFileAtomically(path, content, force);
        return "written";
    } catch (const Failure& failure) {
        return "exit " + std::to_string(exitCode(failure.status())) + ": " + failure.message();
    }
}

TEST(AtomicFile, WritesANewFileAndReplacesOnlyWithForce)
{
    const TempFolder folder;
    const std::string path = folder.path + "/req.pem";
    const mode_t previousMask = umask(022);
    EXPECT_EQ(outcome(path, "first\n", false), "written");
    umask(previousMask);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);
    EXPECT_EQ(outcome(path, "second\n", false), "exit 64: " + path + " exists; give --force to replace it");
    EXPECT_EQ(folder.read("req.pem"), "first\n");
    EXPECT_EQ(outcome(path, "second\n", true), "written");
    EXPECT_EQ(folder.read("req.pem"), "second\n");
    EXPECT_EQ(folder.names(), std::set<std::string>{"req.pem"});
}

TEST(AtomicFile, RefusesLinksFoldersAndEmptyContent)
{
    const TempFolder folder;
    const std::string target = folder.path + "/target";
    const std::string link = folder.path + "/link";
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);  // dangling: would create target
    const std::string sub = folder.path + "/sub";
    ASSERT_EQ(mkdir(sub.c_str(), 0700), 0);
    EXPECT_EQ(outcome(link, "pem", true), "exit 73: " + link + " is a symbolic link; name the file itself");
    EXPECT_EQ(outcome(sub, "pem", true), "exit 73: " + sub + " is a directory; name a file");
    EXPECT_EQ(outcome(folder.path + "/new", "", true),
              "exit 74: nothing to write to " + folder.path + "/new; it is left as it was");
    EXPECT_EQ(outcome(folder.path + "/missing/new", "pem", false).substr(0, 35 + folder.path.size()),
              "exit 73: cannot create a file in " + folder.path + "/m");
    EXPECT_EQ(folder.names(), (std::set<std::string>{"link", "sub"}));
    EXPECT_EQ(outcome("/dev/null", "pem", true), "exit 73: /dev/null is not a regular file");
}

TEST(AtomicFile, AFailedWriteLeavesNoTemporaryFile)
{
    const TempFolder folder;
    const std::string path = folder.path + "/req.pem";
    ASSERT_EQ(outcome(path, "old\n", false), "written");
    // A file-size limit makes the write of the temporary file fail part-way.
    rlimit previous{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &previous), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = previous;
    small.rlim_cur = 16;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string result = outcome(path, std::string(64, 'x'), true);
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_EQ(result, "exit 74: cannot write " + path + ": File too large");
    EXPECT_EQ(folder.names(), std::set<std::string>{"req.pem"});
    EXPECT_EQ(folder.read("req.pem"), "old\n");
}

}  // namespace

// corvelsim as a launcher: the command starts with default signals, is
// killed when it outlives SIGTERM, and fails like a shell when it cannot run;
// corvelsim's own failures say why.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

// The hexadecimal mask after "NAME:\t" in /proc/PID/status text.
uint64_t statusMask(const std::string& status, const std::string& name)
{
    const size_t at = status.find(name + ":\t");
    return at == std::string::npos ? ~uint64_t(0) : std::stoull(status.substr(at + name.size() + 2), nullptr, 16);
}

uint64_t bit(int signal) { return uint64_t(1) << (signal - 1); }

TEST(Launcher, CommandStartsWithDefaultSignalsAndNothingBlocked)
{
    SimDir dir;
    // corvelsim inherits a blocked SIGUSR1 from us; the command must not.
    sigset_t usr1, before;
    sigemptyset(&usr1);
    sigaddset(&usr1, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &usr1, &before);
    SimRun masks = runSim(dir, {}, {"/bin/grep", "-E", "^Sig(Blk|Ign):", "/proc/self/status"});
    pthread_sigmask(SIG_SETMASK, &before, nullptr);

    ASSERT_EQ(masks.status, 0) << masks.err;
    EXPECT_EQ(statusMask(masks.out, "SigBlk"), 0u);
    // With SIGPIPE ignored, a writer whose reader is gone would see EPIPE.
    EXPECT_EQ(statusMask(masks.out, "SigIgn") & (bit(SIGINT) | bit(SIGQUIT) | bit(SIGPIPE)), 0u) << masks.out;
}

TEST(Launcher, SignalEndsTheCommandAndOneThatOutlivesSigtermIsKilled)
{
    // The command sends corvelsim (its parent) the signal itself, so that the
    // test knows the command is running by then. At --speed 1 the sleep lasts
    // 30 real seconds, far beyond the 10 allowed here.
    const struct {
        const char* name;
        const char* script;
        int status;
        bool killed;
    } cases[] = {
        {"SIGTERM ends the command", "kill -TERM $PPID; exec sleep 30", 128 + SIGTERM, false},
        {"SIGHUP too", "kill -HUP $PPID; exec sleep 30", 128 + SIGTERM, false},
        {"SIGTERM ignored", "trap '' TERM; kill -TERM $PPID; exec sleep 30", 128 + SIGKILL, true},
        // The umockdev preload blocks signals while an open waits for a FIFO's
        // writer; the signal goes once cat waits there. Should cat outlive
        // corvelsim, the FIFO opened for writing lets it end after some 20 s.
        {"stuck opening a FIFO", R"(mkfifo fifo
            (
              for i in $(seq 1000); do grep -q wait_for_partner /proc/$$/wchan && break; sleep 0.01; done
              kill -TERM $PPID
              for i in $(seq 2000); do kill -0 $$ 2>/dev/null || exit 0; sleep 0.01; done
              exec 3<>fifo
            ) &
            exec cat fifo)",
         128 + SIGKILL, true},
    };
    for (const auto& c : cases) {
        SimDir dir;
        auto start = std::chrono::steady_clock::now();
        SimRun run = runSim(dir, {"--speed", "1", "--kill-after", "300"}, {"/bin/sh", "-c", c.script});
        auto elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(run.status, c.status) << c.name << ": " << run.err;
        EXPECT_LT(elapsed, std::chrono::seconds(10)) << c.name;
        bool saysKilled = run.err.find("did not end within 300 ms of SIGTERM") != std::string::npos;
        EXPECT_EQ(saysKilled, c.killed) << c.name << ": " << run.err;
    }
}

// The command sees the descriptors it was given and none of corvelsim's
// files; corvelsim started with closed standard descriptors writes none of
// its messages into its own files (here the SIGTERM it passes on is ignored,
// so it says it killed the command).
TEST(Launcher, DescriptorsStayTheCallersOnBothSides)
{
    SimDir dir;
    SimRun seen = runSim(dir, {"--usb", "1:4", "--usb-trace", dir.file("usb.txt")}, {"/bin/ls", "-l", "/proc/self/fd"});
    ASSERT_EQ(seen.status, 0) << seen.err;
    for (const char* file : {"requests.jsonl", "usb.txt", "state.txt"}) EXPECT_FALSE(holds(seen.out, file)) << seen.out;

    for (const char* closed : {"<&-", ">&-", "2>&-", "<&- >&- 2>&-"}) {
        SCOPED_TRACE(closed);
        const std::string script = "exec \"$0\" --speed 1 --state state.txt --log requests.jsonl --kill-after 0 -- "
                                   "sh -c 'trap \"\" TERM; kill -TERM $PPID; sleep 2' " +
                                   std::string(closed);
        const SimRun run = runCommand(dir, {"/bin/bash", "-c", script, CORVELSIM_PATH});
        EXPECT_EQ(run.status, 128 + SIGKILL);
        EXPECT_EQ(dir.read("state.txt.lock"), "");
        EXPECT_EQ(dir.read("requests.jsonl"), "");
        const bool toStderr = !holds(closed, "2>&-");
        EXPECT_EQ(holds(run.err, "did not end within 0 ms of SIGTERM"), toStderr) << run.err;
    }
}

// A corvelsim in the background whose command writes its testbed folder,
// its TMPDIR and its process id to `report`, then sleeps in real time; both
// killed at the end if still there.
class Background {
public:
    Background(const SimDir& dir, const std::string& tmp, const std::string& report)
    {
        const std::string path = dir.file(report);
        corvelsim = fork();
        if (corvelsim == 0) {
            const int nothing = open("/dev/null", O_RDWR);
            dup2(nothing, 0);
            dup2(nothing, 1);
            dup2(nothing, 2);
            setenv("TMPDIR", tmp.c_str(), 1);
            const std::string script = "printf '%s\\n%s\\n%s\\n' \"$UMOCKDEV_DIR\" \"$TMPDIR\" $$ >" + path +
                                       ".new; mv " + path + ".new " + path + "; exec sleep 30";
            execl(CORVELSIM_PATH, CORVELSIM_PATH, "--speed", "1", "--", "/bin/sh", "-c", script.c_str(),
                  (char*)nullptr);
            _exit(127);
        }
        for (int i = 0; i < 1000 && dir.read(report).empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const std::vector<std::string> lines = words(dir.read(report));
        if (lines.size() == 3) {
            testbed = lines[0];
            tmpdir = lines[1];
            command = pid_t(std::stoi(lines[2]));
        }
    }
    ~Background()
    {
        if (command > 0) kill(command, SIGKILL);
        end(SIGKILL);
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    void end(int signal)
    {
        if (corvelsim <= 0) return;
        kill(corvelsim, signal);
        waitpid(corvelsim, nullptr, 0);
        corvelsim = -1;
    }

    pid_t corvelsim = -1;
    std::string testbed, tmpdir;
    pid_t command = -1;
};

bool exists(const std::string& path)
{
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

// The testbed folder of a killed corvelsim goes when the next one starts; a
// live one's, and anything in the private folder corvelsim did not mark as
// its own, stay. The command sees its caller's TMPDIR.
TEST(Launcher, NextStartRemovesTheTestbedOfAKilledCorvelsimOnly)
{
    SimDir dir;
    const std::string tmp = dir.file("tmp");
    std::filesystem::create_directory(tmp);
    const std::string folder = tmp + "/corvelsim-" + std::to_string(geteuid());
    Background killed(dir, tmp, "killed.txt");
    Background live(dir, tmp, "live.txt");
    ASSERT_EQ(killed.testbed.rfind(folder + "/umockdev.", 0), 0u) << killed.testbed;
    ASSERT_EQ(live.testbed.rfind(folder + "/umockdev.", 0), 0u) << live.testbed;
    EXPECT_EQ(killed.tmpdir, tmp);
    // Not corvelsim's: a folder without its lock, and a link to a folder with one.
    std::filesystem::create_directories(folder + "/umockdev.unmarked/dev");
    std::filesystem::create_directory(dir.file("elsewhere"));
    dir.write("elsewhere/corvelsim.lock", "");
    std::filesystem::create_directory_symlink(dir.file("elsewhere"), folder + "/umockdev.link");

    killed.end(SIGKILL);
    EXPECT_TRUE(exists(killed.testbed)) << "left behind by the kill";

    const SimRun next = runCommand(dir, {"/usr/bin/env", "TMPDIR=" + tmp, CORVELSIM_PATH, "--", "/bin/true"});
    EXPECT_EQ(next.status, 0) << next.err;
    EXPECT_FALSE(exists(killed.testbed));
    EXPECT_TRUE(exists(live.testbed + "/corvelsim.lock"));
    EXPECT_TRUE(exists(folder + "/umockdev.unmarked/dev"));
    EXPECT_TRUE(exists(dir.file("elsewhere/corvelsim.lock")) && exists(folder + "/umockdev.link"));

    // Ended by a signal it takes, corvelsim removes its own.
    live.end(SIGTERM);
    EXPECT_FALSE(exists(live.testbed));
}

// corvelsim ends with the command's exit status, 128 + the signal that
// killed it, or a shell's status for a command that cannot run.
TEST(Launcher, EndsWithTheCommandsStatusAndFailsLikeAShell)
{
    SimDir dir;
    dir.write("not-executable", "#!/bin/sh\necho ran\n");
    const struct {
        std::vector<std::string> command;
        int status;
        const char* reason;  // why it cannot run ("" = it runs)
    } cases[] = {
        {{"./not-executable"}, 126, "Permission denied"},
        {{"./missing"}, 127, "No such file or directory"},
        {{"corvel-no-such-command"}, 127, "No such file or directory"},
        {{"/bin/sh", "-c", "test -c /dev/usb/lp0 && exit 7"}, 7, ""},
        {{"/bin/sh", "-c", "kill -TERM $$"}, 128 + SIGTERM, ""},
    };
    for (const auto& c : cases) {
        SimRun run = runSim(dir, {}, c.command);
        EXPECT_EQ(run.status, c.status) << c.command.back();
        EXPECT_EQ(run.err, *c.reason ? "corvelsim: cannot run '" + c.command[0] + "': " + c.reason + "\n" : "");
        EXPECT_EQ(run.out, "") << c.command.back();
    }
}

// faketime's shared clock (two files in /dev/shm named after the command's
// pid) is there while the command runs and gone after it, however it ended.
TEST(Launcher, FastClockLeavesNothingInSharedMemory)
{
    SimDir dir;
    const std::string shows = "echo $$; test -e /dev/shm/faketime_shm_$$ && test -e /dev/shm/sem.faketime_sem_$$ && ";
    for (const std::string ending : {"exec /bin/true", "exit 0", "kill -KILL $$"}) {
        SimRun run = runSim(dir, {"--speed", "20"}, {"/bin/sh", "-c", shows + ending});
        const std::string pid = run.out.substr(0, run.out.find('\n'));
        ASSERT_FALSE(pid.empty()) << ending;
        EXPECT_EQ(run.status, ending == "kill -KILL $$" ? 128 + SIGKILL : 0) << ending << ": the files were not there";
        EXPECT_FALSE(std::filesystem::exists("/dev/shm/faketime_shm_" + pid)) << ending;
        EXPECT_FALSE(std::filesystem::exists("/dev/shm/sem.faketime_sem_" + pid)) << ending;
    }
}

TEST(Launcher, ValuesOutsideTheirRangeAreRefusedAsTheHelpStatesAndFailuresSayWhy)
{
    SimDir dir;
    SimRun help = runCommand(dir, {CORVELSIM_PATH, "--help"});
    const struct {
        std::vector<std::string> options;
        std::string message;  // part of the refusal
        const char* range;    // as --help states it ("" = no range)
    } cases[] = {
        {{"--kill-after", "600001"}, "--kill-after needs real milliseconds from 0 to 600000", "0..600000"},
        {{"--fault", "split=65"}, "bad value in fault 'split=65': it takes a number from 2 to 64", "2..64"},
        {{"--fault", "late"}, "bad value in fault 'late': it takes a number from 1 to 600000", "1..600000"},
        {{"--no-lp"}, "corvelsim: --no-lp needs --usb BUS:DEV", "Needs --usb"},
        {{"--usb", "1:4", "--no-lp", "--lp", "1"}, "corvelsim: --no-lp and --lp cannot go together", "not with --lp"},
        // A failed system call says which and why.
        {{"--log", dir.file("no-such-dir/requests.jsonl")},
         "corvelsim: cannot open the request log '" + dir.file("no-such-dir/requests.jsonl") +
             "': No such file or directory\n",
         ""},
    };
    for (const auto& c : cases) {
        SimRun run = runSim(dir, c.options, {"/bin/true"});
        EXPECT_EQ(run.status, 2) << c.message;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_NE(help.out.find(c.range), std::string::npos) << c.range;
    }
}

}  // namespace
}  // namespace e2e

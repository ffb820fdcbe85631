// Runs a command (usually the real corvelcfg) under the real corvelsim in a
// temporary directory that holds the printer's state file and request log.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/HexText.h"

namespace e2e {

using Bytes = std::vector<uint8_t>;
// "A50006...", as the request log writes bytes.
template <typename ByteText>
std::string toHex(const ByteText& bytes)
{
    return hexOf(bytes, "");
}

// A temporary directory, removed with everything in it at the end.
class SimDir {
public:
    SimDir();
    ~SimDir();
    SimDir(const SimDir&) = delete;
    SimDir& operator=(const SimDir&) = delete;

    std::string file(const std::string& name) const { return m_Path + "/" + name; }
    void write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;

private:
    std::string m_Path;
};

struct SimRun {
    int status = -1;  // the command's exit status, 128 + signal when killed
    bool timedOut = false;
    std::string out, err;
    std::vector<std::string> log;  // this run's requests only, one JSON object a line
};

// The value of `key` in a log line, as written ("" when missing): corvelsim
// writes flat lines without blanks, and the keys read here (seq, port, kind,
// raw, answer, method) occur once, outside the settings items.
std::string logValue(const std::string& line, const std::string& key);

// `line` split at blanks, as a shell would split it without quotes.
std::vector<std::string> words(const std::string& line);

inline bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
int occurrences(const std::string& text, const std::string& part);

// Runs `argv` in `dir` as it is (no simulator around it); the log stays empty.
SimRun runCommand(const SimDir& dir, const std::vector<std::string>& argv, const char* input = nullptr);

// `corvelsim --speed 20 --state state.txt --log requests.jsonl <simOptions> -- <command>`
// in `dir`; a later "--speed N" among `simOptions` wins. Standard input is a
// file holding `input`, or /dev/null.
SimRun runSim(const SimDir& dir, const std::vector<std::string>& simOptions, const std::vector<std::string>& command,
              const char* input = nullptr);
// The same with corvelcfg and `args` as the command.
SimRun runCorvelcfg(const SimDir& dir, const std::vector<std::string>& simOptions, const std::vector<std::string>& args,
                    const char* input = nullptr);
// The same with corvelctl and `args` as the command, in real time ("--speed 1"
// first among the options, so that a later "--speed N" wins).
SimRun runCorvelctl(const SimDir& dir, const std::vector<std::string>& simOptions, const std::vector<std::string>& args,
                    const char* input = nullptr);

// The "raw" hex of each logged request, in order.
std::vector<std::string> rawRequests(const SimRun& run);

// Writes `secret` to secret.txt, of mode 0600, for --passphrase-file.
void writeSecretFile(const SimDir& dir, const std::string& secret);

// Runs `command` with /bin/sh in `dir`, its output thrown away (openssl,
// file set-up); the shell's exit status.
int runShell(const SimDir& dir, const std::string& command);

}  // namespace e2e

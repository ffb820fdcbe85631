// Runs the real corvelcfg under the real corvelsim, each run in a temporary
// directory that holds the printer's state file and request log.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/e2e/JsonValue.h"

namespace e2e {

// A temporary directory, removed with everything in it at the end.
class SimDir {
public:
    SimDir();
    ~SimDir();
    SimDir(const SimDir&) = delete;
    SimDir& operator=(const SimDir&) = delete;

    const std::string& path() const { return m_Path; }
    std::string file(const std::string& name) const { return m_Path + "/" + name; }
    void write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;

private:
    std::string m_Path;
};

struct SimRun {
    int status = -1;              // corvelsim's exit status (the command's)
    std::string out;              // exact standard output
    std::string err;              // exact standard error
    std::vector<JsonValue> log;   // the request log, one entry per request
    std::vector<std::string> badLogLines;
    bool timedOut = false;
};

// Runs `corvelsim --speed 20 --state --log <simOptions> -- corvelcfg <args>`
// in a fresh directory holding `files` (name to content). A "--speed N" among
// `simOptions` comes later on corvelsim's command line and wins.
SimRun run(const std::vector<std::string>& simOptions, const std::vector<std::string>& corvelcfgArgs,
           const std::map<std::string, std::string>& files = {});

// The same in a directory the caller keeps, so that state carries over; the
// log holds this run's requests only.
SimRun runIn(const SimDir& dir, const std::vector<std::string>& simOptions,
             const std::vector<std::string>& corvelcfgArgs);

// Like `runIn`, with standard input a pipe holding `input` (the other runs
// read /dev/null).
SimRun runInWithInput(const SimDir& dir, const std::vector<std::string>& simOptions,
                      const std::vector<std::string>& corvelcfgArgs, const std::string& input);

// Runs corvelsim with an arbitrary command instead of corvelcfg.
SimRun runCommandIn(const SimDir& dir, const std::vector<std::string>& simOptions,
                    const std::vector<std::string>& command);

extern const char* const kCorvelcfg;
extern const char* const kCorvelsim;

}  // namespace e2e

// A file under /tmp with the given content, removed at the end of the test.
// Its name holds no '-', so the utility may take it for a USB path.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

struct TempFile {
    explicit TempFile(const std::string& content)
    {
        char name[] = "/tmp/corvelcfgXXXXXX";
        ::close(mkstemp(name));
        path = name;
        std::ofstream(path, std::ios::binary) << content;
    }
    ~TempFile() { std::remove(path.c_str()); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    std::string path;
};

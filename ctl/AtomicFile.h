// Writing an output file so that it is either the old file or the complete
// new one, never a part, and never written through a symbolic link.
#pragma once

#include <string>
#include <string_view>

namespace corvelctl {

// Writes `content` to `path` through a temporary file in the same folder
// (mode 0644 less the umask), synced, then renamed over `path`. Refuses, with
// a failure:
// - empty content (exit 74: nothing is written rather than an empty file);
// - `path` a symbolic link, a directory or another non-regular file (73);
// - `path` existing when `force` is false (64: "exists; --force to replace");
//   the check holds even against a file created meanwhile (RENAME_NOREPLACE);
// - a temporary file that cannot be made (73) or written and synced (74).
// On every failure the temporary file is removed.
void writeFileAtomically(const std::string& path, std::string_view content, bool force);

// The checks of `path` that writeFileAtomically makes first, for a command to
// make before it asks the printer for anything.
void checkOutputTarget(const std::string& path, bool force);

}  // namespace corvelctl

// The process's standard streams at the start and the end of a run.
#pragma once

// A standard descriptor the caller closed (`>&-`) would be the first one an
// open() returns: the printer's node would become standard output. Each closed
// one is held by /dev/null opened for reading, so that writes to it fail
// (EBADF) and reads find nothing.
void holdClosedStandardDescriptors();

// Flushes standard output; false, after one line on standard error with the
// reason, when what the run wrote there could not be written.
bool outputWritten();

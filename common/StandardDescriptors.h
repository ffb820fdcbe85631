// The process's standard descriptors at the start of a run.
#pragma once

// A standard descriptor the caller closed (`>&-`) would be the first one an
// open() returns: the printer's node would become standard output. Each closed
// one is held by /dev/null opened for reading, so that writes to it fail
// (EBADF) and reads find nothing.
void holdClosedStandardDescriptors();

// The process's standard streams at the end of a run (at its start:
// common/StandardDescriptors.h).
#pragma once

#include "common/StandardDescriptors.h"

// Flushes standard output; false, after one line on standard error with the
// reason, when what the run wrote there could not be written.
bool outputWritten();

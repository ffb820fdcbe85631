// The standard descriptors of corvelsim and of the command it runs.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Holds each closed standard descriptor (0-2) with /dev/null opened for
// reading: writes to it fail (EBADF) as they would on the closed descriptor,
// reads find nothing, and no other file can take its number. Raw system calls
// only: it also runs in the command before its libraries are set up, where
// umockdev's open() would add a socket of its own for /dev/null.
void corvelsimHoldClosedStandardDescriptors(void);

#ifdef __cplusplus
}
#endif

// libcorvelsim-preload.so: preloaded into the command last, so that its
// constructor runs before those of faketime and umockdev. A standard
// descriptor the command's caller closed (`sh -c 'corvelcfg >&-'`) would
// otherwise be the number faketime's shared memory or umockdev's socket
// takes: the command's output would go there instead of failing.
#include "sim/process/StandardDescriptors.h"

__attribute__((constructor)) static void holdBeforeAnyLibrary(void) { corvelsimHoldClosedStandardDescriptors(); }

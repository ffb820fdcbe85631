// corvelcfg: configures the wireless interface of a printer attached by USB.
#include "app/Application.h"

int main(int argc, char** argv) { return runCorvelcfg(argc, argv); }

#include "sim/process/SimSignals.h"

#include <csignal>

namespace corvelsim {

namespace {

const int kIgnored[] = {SIGINT, SIGQUIT, SIGPIPE};
const int kHandled[] = {SIGTERM, SIGHUP};

void setAction(int signal, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void takeOverSignals(void (*onTerminate)(int))
{
    for (int signal : kIgnored) setAction(signal, SIG_IGN);
    for (int signal : kHandled) setAction(signal, onTerminate);
}

void giveBackSignals()
{
    for (int signal : kIgnored) setAction(signal, SIG_DFL);
    for (int signal : kHandled) setAction(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace corvelsim

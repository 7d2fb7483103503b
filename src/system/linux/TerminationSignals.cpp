// SPDX-License-Identifier: Apache-2.0
#include "system/linux/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace bram
{

namespace
{
constexpr std::array handledSignals {SIGTERM, SIGINT, SIGHUP};

int handlerPipe = -1; // a signal handler has no other way to reach an object

void onSignal(int number)
{
    const int interruptedErrno = errno;
    // From now on the default action: whoever asks twice does not want to wait.
    std::signal(number, SIG_DFL);
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(handlerPipe, &byte, 1);
    errno = interruptedErrno;
}

auto currentHandler(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler;
}
} // namespace

TerminationSignals::TerminationSignals()
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // the default actions stay in force
    }
    handlerPipe = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(m_pipe[0], &byte, 1) == 1) { }
        Q_EMIT requested();
    });
    for (const int number : handledSignals) {
        if (currentHandler(number) == SIG_IGN) {
            continue; // somebody, such as nohup, wants the program to outlive it
        }
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        sigaction(number, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : handledSignals) {
        if (currentHandler(number) == onSignal) {
            std::signal(number, SIG_DFL);
        }
    }
    m_notifier.reset();
    handlerPipe = -1;
    for (const int end : m_pipe) {
        if (end >= 0) {
            ::close(end);
        }
    }
}

} // namespace bram

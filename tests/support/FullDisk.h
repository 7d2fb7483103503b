// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

namespace bram::test
{

/// While it lives, this process cannot write a byte to any file, also as root.
class FullDisk
{
public:
    FullDisk()
        : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit none {.rlim_cur = 0, .rlim_max = m_limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_signal);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    void (*m_signal)(int);
    rlimit m_limit {};
};

} // namespace bram::test

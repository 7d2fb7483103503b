// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>

#include <array>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

namespace bram::test
{

/// Two connected descriptors: what the code under test gets, and the test's own end, which never blocks.
class Descriptors
{
public:
    ~Descriptors()
    {
        closeInner();
        closeOuter();
    }
    Descriptors(const Descriptors &) = delete;
    Descriptors &operator=(const Descriptors &) = delete;

    int inner() const { return m_inner; }
    int outer() const { return m_outer; }
    void closeInner() { closeOne(m_inner); }
    void closeOuter() { closeOne(m_outer); }

    void send(const QByteArray &bytes) const
    {
        if (write(m_outer, bytes.constData(), size_t(bytes.size())) != bytes.size()) {
            qFatal("the test's own end took too little");
        }
    }
    /// Everything that waits to be read.
    QByteArray received() const
    {
        QByteArray result;
        std::array<char, 65536> buffer;
        for (ssize_t count = 0; (count = read(m_outer, buffer.data(), buffer.size())) > 0;) {
            result.append(buffer.data(), count);
        }
        return result;
    }

protected:
    Descriptors(int inner, int outer)
        : m_inner(inner)
        , m_outer(outer)
    {
        fcntl(m_outer, F_SETFL, fcntl(m_outer, F_GETFL) | O_NONBLOCK);
    }

private:
    static void closeOne(int &descriptor)
    {
        if (descriptor >= 0) {
            close(descriptor);
            descriptor = -1;
        }
    }

    int m_inner;
    int m_outer;
};

using Ends = std::array<int, 2>;

/// A pipe into the code under test.
class InputPipe : public Descriptors
{
public:
    explicit InputPipe(Ends ends = make())
        : Descriptors(ends[0], ends[1])
    {
    }
    static Ends make()
    {
        Ends ends {};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            qFatal("no pipe");
        }
        return ends;
    }
};

/// A pipe out of the code under test.
class OutputPipe : public Descriptors
{
public:
    explicit OutputPipe(Ends ends = InputPipe::make())
        : Descriptors(ends[1], ends[0])
    {
    }
};

/// A terminal: the code under test has the inner end, the test is the keyboard and the screen.
class Terminal : public Descriptors
{
public:
    explicit Terminal(int columns, Ends ends = make())
        : Descriptors(ends[1], ends[0])
    {
        resize(columns);
    }
    void resize(int columns) const
    {
        winsize size {};
        size.ws_col = static_cast<unsigned short>(columns);
        size.ws_row = 24;
        ioctl(outer(), TIOCSWINSZ, &size);
    }

private:
    static Ends make()
    {
        Ends ends {};
        if (openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) != 0) {
            qFatal("no pseudo-terminal");
        }
        return ends;
    }
};

} // namespace bram::test

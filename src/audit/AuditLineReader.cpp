// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLineReader.h"

#include "system/SystemErrors.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace bram
{

namespace
{
constexpr std::size_t maxLineBytes = 16 * 1024 * 1024;
/// Small enough to stay in a processor's own cache until its lines are done with.
constexpr std::size_t blockBytes = 262'144;

std::expected<std::size_t, Error> readSome(int descriptor, char *out, std::size_t count,
                                           std::size_t offset)
{
    while (true) {
        const ssize_t got = ::pread(descriptor, out, count, static_cast<off_t>(offset));
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            return std::unexpected(Error {systemErrorText(errno)});
        }
    }
}
} // namespace

std::expected<void, Error> AuditLineReader::read(const AuditLogFile &file, const Consume &consume,
                                                 const Progress &progress)
{
    m_kept = 0;
    m_isPassingOver = false;
    m_buffer.resize(std::max(m_buffer.size(), blockBytes + linePadding));
    for (std::size_t offset = 0; offset < file.size();) {
        if (m_buffer.size() - linePadding - m_kept < blockBytes / 2) {
            m_buffer.resize(2 * m_buffer.size());
        }
        const std::size_t room = m_buffer.size() - linePadding - m_kept;
        const auto count = readSome(file.descriptor(), m_buffer.data() + m_kept,
                                    std::min(room, file.size() - offset), offset);
        if (!count) {
            return std::unexpected(count.error());
        }
        if (*count == 0) {
            break;
        }
        offset += *count;
        const std::size_t size = m_kept + *count;
        keepRest(handOn(size, consume), size);
        if (progress && !progress(*count)) {
            return {};
        }
    }
    if (m_kept > 0 && !m_isPassingOver) {
        consume({m_buffer.data(), m_kept});
    }
    return {};
}

/// Hands on the whole lines among the first `size` bytes. Returns where the next line begins.
std::size_t AuditLineReader::handOn(std::size_t size, const Consume &consume)
{
    std::size_t begin = 0;
    while (begin < size) {
        const char *line = m_buffer.data() + begin;
        const auto *end = static_cast<const char *>(std::memchr(line, '\n', size - begin));
        if (end == nullptr) {
            break;
        }
        const auto length = static_cast<std::size_t>(end - line);
        if (!std::exchange(m_isPassingOver, false) && length > 0 && length <= maxLineBytes) {
            consume({line, length});
        }
        begin += length + 1;
    }
    return begin;
}

void AuditLineReader::keepRest(std::size_t begin, std::size_t size)
{
    m_kept = size - begin;
    m_isPassingOver = m_isPassingOver || m_kept > maxLineBytes;
    if (m_isPassingOver) {
        m_kept = 0;
    } else if (begin > 0) {
        std::memmove(m_buffer.data(), m_buffer.data() + begin, m_kept);
    }
}

} // namespace bram

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <string_view>
#include <vector>

namespace bram
{

/// So many bytes behind each line that an `AuditLineReader` hands out may be read, whatever is in them.
inline constexpr std::size_t linePadding = 64;

/// Cuts a file into lines, without copying them. Keeps its buffer from file to file.
class AuditLineReader
{
public:
    using Consume = std::function<void(std::string_view line)>;
    /// Called with the number of bytes read since the last call; false ends the reading.
    using Progress = std::function<bool(std::size_t bytes)>;

    /// Hands the lines that the file had when it was opened to `consume`, in order and without the line feed;
    /// empty lines are left out. The bytes are valid during the call only. A last line without line feed is
    /// handed on too; a line of more than 16 MiB is passed over. Fails, with the lines so far handed on, when
    /// reading does; the message is the system's.
    std::expected<void, Error> read(const AuditLogFile &file, const Consume &consume,
                                    const Progress &progress = {});

private:
    std::size_t handOn(std::size_t size, const Consume &consume);
    void keepRest(std::size_t begin, std::size_t size);

    std::vector<char> m_buffer;
    std::size_t m_kept = 0; ///< bytes of a line that has not ended, at the buffer's beginning
    bool m_isPassingOver = false; ///< within a line that is too long
};

} // namespace bram

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/LineSource.h"

#include <QByteArray>
#include <QSocketNotifier>

#include <optional>

#include <termios.h>

namespace bram
{

/// Lines from a pipe, a file or any other descriptor that is not edited here. Never changes the flags
/// of the descriptor, which may be shared with other programs.
///
/// Lines are UTF-8, ended by LF or CR LF; the last one counts without it. A line over 64 KiB and one that
/// is not UTF-8 are refused and skipped.
class PipeLineReader final : public LineSource
{
    Q_OBJECT

public:
    static constexpr qsizetype maxLineBytes = 64 * 1024;

    /// When a line counts as begun.
    enum class LineStart {
        WhenRead, ///< with its first byte
        AtPreviousEnd, ///< as soon as the line before it has ended: of a line typed at a terminal that edits
        ///< by itself nothing is seen before its end
    };

    explicit PipeLineReader(int descriptor, LineStart lineStart = LineStart::WhenRead);
    ~PipeLineReader() override;

    void start() override;
    void readWaiting() override;
    /// Of a terminal that shows by itself what is typed.
    void hideInput(bool isHidden) override;

private:
    bool isReadable() const;
    void take(QByteArrayView bytes, DialogueMoment readAt);
    void endLine(DialogueMoment readAt);
    void finish(DialogueMoment readAt);

    int m_descriptor;
    LineStart m_lineStart;
    QSocketNotifier m_notifier;
    QByteArray m_line; ///< the bytes of a line that has not ended
    std::optional<DialogueMoment> m_begunAt; ///< of that line
    DialogueMoment m_previousEnd = 0;
    std::optional<DialogueMoment> m_backlogSince; ///< set while more waits than was read at once
    bool m_skipping = false; ///< the rest of a refused line
    bool m_ended = false;
    std::optional<termios> m_settingsBefore; ///< of a terminal that does not show what is typed now
};

} // namespace bram

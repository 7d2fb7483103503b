// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/KeyDecoder.h"
#include "ui/terminal/LineSource.h"

#include <QSocketNotifier>

#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include <histedit.h>
#include <termios.h>

namespace bram
{

class TerminalOutput;

/// Lines typed at a terminal, with editing and the earlier lines at hand. The terminal gets its settings
/// back when the editor goes.
///
/// Keys are read here and handed to the editing library one whole key at a time: it would wait for the
/// rest of a key, and the program with it. Ctrl-D on an empty line and Ctrl-C anywhere end the input.
class TerminalLineEditor final : public LineSource
{
    Q_OBJECT

public:
    /// `inputDescriptor` and `output` are the same terminal; `output` outlives the editor.
    TerminalLineEditor(int inputDescriptor, TerminalOutput &output);
    ~TerminalLineEditor() override;

    void start() override;
    void readWaiting() override;
    void printAbove(const std::function<void()> &print) override;
    /// What has been typed of a line by then is part of the secret.
    void hideInput(bool isHidden) override;

private:
    struct EditLineEnd {
        void operator()(EditLine *editLine) const { el_end(editLine); }
    };
    struct HistoryEnd {
        void operator()(HistoryW *history) const { history_wend(history); }
    };
    struct FileEnd {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };

    static wchar_t *prompt(EditLine *editLine);
    wchar_t *currentPrompt() const;
    static int nextCharacter(EditLine *editLine, wchar_t *character);
    static ssize_t writeOut(void *cookie, const char *bytes, size_t size);

    void makeEditor();
    void processKey(char32_t key);
    void processHiddenKey(char32_t key);
    void edit(wchar_t character);
    void finishLine(const wchar_t *text, int length);
    void finish();
    bool isLineEmpty() const;
    void followTerminalSize();
    int rowsAboveCursor() const;
    void eraseLine();

    int m_descriptor;
    TerminalOutput &m_output;
    QSocketNotifier m_notifier;
    std::optional<termios> m_settingsBefore;
    KeyDecoder m_decoder;
    std::unique_ptr<std::FILE, FileEnd> m_outputFile; ///< into `m_output`; used by `m_editor`
    std::unique_ptr<HistoryW, HistoryEnd> m_history;
    std::unique_ptr<EditLine, EditLineEnd> m_editor;
    std::deque<wchar_t> m_characters; ///< for the editing library to take
    std::optional<DialogueMoment> m_begunAt; ///< of the line being typed, unless it is empty
    int m_columns = 80;
    std::optional<std::u32string> m_hidden; ///< typed of a secret; set while input is hidden
    bool m_printing = false;
    bool m_ended = false;
};

} // namespace bram

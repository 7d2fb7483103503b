// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalLineEditor.h"

#include "monitor/TelegramTokens.h"
#include "ui/terminal/TerminalOutput.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <utility>

#include <langinfo.h>
#include <poll.h>
#include <unistd.h>

namespace bram
{

namespace
{
constexpr int rememberedLines = 200;
constexpr int maxLineCharacters = 4096;
/// The library takes prompts that are not const; it does not write to them.
wchar_t promptText[] = L"bram> ";
wchar_t hiddenPromptText[] = L"(hidden)> ";
constexpr char32_t backspaceKey = 0x08;
constexpr char32_t deleteKey = 0x7F;
constexpr char32_t eraseLineKey = 0x15; // Ctrl-U

/// Without this, letters beyond ASCII would be counted and drawn wrongly.
void useUtf8Characters()
{
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0) {
        return;
    }
    if (!std::setlocale(LC_CTYPE, "") || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
}
} // namespace

TerminalLineEditor::TerminalLineEditor(int inputDescriptor, TerminalOutput &output)
    : m_descriptor(inputDescriptor)
    , m_output(output)
    , m_notifier(QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &TerminalLineEditor::readWaiting);
}

TerminalLineEditor::~TerminalLineEditor()
{
    m_notifier.setEnabled(false);
    finish();
    m_editor.reset();
    if (m_settingsBefore) {
        tcsetattr(m_descriptor, TCSADRAIN, &*m_settingsBefore);
    }
}

void TerminalLineEditor::start()
{
    termios settings {};
    if (tcgetattr(m_descriptor, &settings) == 0) {
        m_settingsBefore = settings;
    }
    useUtf8Characters();
    makeEditor();
    m_notifier.setSocket(m_descriptor);
    m_notifier.setEnabled(true);
}

void TerminalLineEditor::makeEditor()
{
    cookie_io_functions_t functions {};
    functions.write = &TerminalLineEditor::writeOut;
    m_outputFile.reset(fopencookie(&m_output, "w", functions));
    m_history.reset(history_winit());
    HistEventW event {};
    history_w(m_history.get(), &event, H_SETSIZE, rememberedLines);
    history_w(m_history.get(), &event, H_SETUNIQUE, 1);

    m_editor.reset(el_init_fd("bram", stdin, m_outputFile.get(), m_outputFile.get(), m_descriptor,
                              m_descriptor, m_descriptor));
    EditLine *editor = m_editor.get();
    el_wset(editor, EL_CLIENTDATA, this);
    el_wset(editor, EL_GETCFN, &TerminalLineEditor::nextCharacter);
    el_wset(editor, EL_PROMPT, &TerminalLineEditor::prompt);
    el_wset(editor, EL_SIGNAL, 0);
    el_wset(editor, EL_EDITOR, L"emacs");
    el_wset(editor, EL_BIND, L"^W", L"ed-delete-prev-word", nullptr);
    el_wset(editor, EL_HIST, history_w, m_history.get());
    // Ctrl-C is a key like the others; Ctrl-S must not stop the output.
    el_wset(editor, EL_SETTY, L"-d", L"-isig", L"-ixon", nullptr);
    m_columns = m_output.columns();
    el_wset(editor, EL_UNBUFFERED, 1);
}

wchar_t *TerminalLineEditor::prompt(EditLine *editLine)
{
    TerminalLineEditor *self = nullptr;
    el_wget(editLine, EL_CLIENTDATA, &self);
    return self->currentPrompt();
}

wchar_t *TerminalLineEditor::currentPrompt() const
{
    return m_hidden ? hiddenPromptText : promptText;
}

int TerminalLineEditor::nextCharacter(EditLine *editLine, wchar_t *character)
{
    TerminalLineEditor *self = nullptr;
    el_wget(editLine, EL_CLIENTDATA, &self);
    if (self->m_characters.empty()) {
        return 0;
    }
    *character = self->m_characters.front();
    self->m_characters.pop_front();
    return 1;
}

ssize_t TerminalLineEditor::writeOut(void *cookie, const char *bytes, size_t size)
{
    static_cast<TerminalOutput *>(cookie)->writeRaw(QByteArrayView(bytes, qsizetype(size)));
    return ssize_t(size);
}

void TerminalLineEditor::readWaiting()
{
    std::array<char, 4096> buffer;
    while (!m_ended && m_editor) {
        pollfd request {m_descriptor, POLLIN, 0};
        if (poll(&request, 1, 0) <= 0) {
            return;
        }
        const ssize_t count = read(m_descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            followTerminalSize();
            for (const char32_t key : m_decoder.take(QByteArrayView(buffer.data(), count))) {
                processKey(key);
            }
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            finish(); // the terminal is gone
        } else if (errno == EAGAIN) {
            return;
        }
    }
}

void TerminalLineEditor::processKey(char32_t key)
{
    if (m_ended) {
        return;
    }
    if (key == KeyDecoder::leave || (key == KeyDecoder::deleteOrEnd && isLineEmpty())) {
        finish();
        return;
    }
    if (!m_begunAt) {
        m_begunAt = moment();
    }
    if (m_hidden) {
        processHiddenKey(key);
        return;
    }
    const LineInfoW *line = el_wline(m_editor.get());
    const bool isPrintable = key >= 0x20 && key != 0x7F && key != KeyDecoder::deleteHere;
    if (isPrintable
        && (wcwidth(wchar_t(key)) < 1 || line->lastchar - line->buffer >= maxLineCharacters)) {
        el_beep(m_editor.get()); // what cannot be drawn on the line does not get onto it
    } else if (key != KeyDecoder::deleteHere) {
        edit(wchar_t(key));
    } else if (!isLineEmpty()) {
        edit(wchar_t(KeyDecoder::deleteOrEnd));
    }
    if (!m_ended && isLineEmpty()) {
        m_begunAt.reset();
    }
}

/// The editing library would draw the key.
void TerminalLineEditor::processHiddenKey(char32_t key)
{
    if (key == U'\r' || key == KeyDecoder::enter) {
        const QString secret = QString::fromStdU32String(*m_hidden);
        std::ranges::fill(*m_hidden, U'\0');
        m_hidden->clear();
        deliverLine(secret, *std::exchange(m_begunAt, std::nullopt));
    } else if ((key == backspaceKey || key == deleteKey) && !m_hidden->empty()) {
        m_hidden->pop_back();
    } else if (key == eraseLineKey) {
        m_hidden->clear();
    } else if (key >= 0x20 && key != deleteKey && key != KeyDecoder::deleteHere
               && m_hidden->size() < maxLineCharacters) {
        m_hidden->push_back(key);
    }
}

void TerminalLineEditor::hideInput(bool isHidden)
{
    if (!m_editor || m_ended || isHidden == m_hidden.has_value()) {
        return;
    }
    eraseLine();
    if (isHidden) {
        const LineInfoW *line = el_wline(m_editor.get());
        m_hidden.emplace(line->buffer, line->lastchar);
        if (!m_hidden->empty()) {
            edit(wchar_t(KeyDecoder::lineEnd));
            el_wdeletestr(m_editor.get(), int(m_hidden->size()));
            eraseLine();
        }
    } else {
        m_hidden.reset();
        m_begunAt.reset();
    }
    el_wset(m_editor.get(), EL_REFRESH);
    std::fflush(m_outputFile.get());
}

void TerminalLineEditor::edit(wchar_t character)
{
    m_characters.push_back(character);
    int length = 0;
    const wchar_t *text = el_wgets(m_editor.get(), &length);
    m_characters.clear();
    if (text && length > 0 && text[length - 1] == L'\n') {
        finishLine(text, length - 1);
    }
}

void TerminalLineEditor::finishLine(const wchar_t *text, int length)
{
    const std::wstring line(text, size_t(length));
    // A token that was pasted before it was asked for stands on the screen; it shall not come back.
    if (!line.empty() && !looksLikeTelegramBotToken(QString::fromStdWString(line).trimmed())) {
        HistEventW event {};
        history_w(m_history.get(), &event, H_ENTER, line.c_str());
    }
    deliverLine(QString::fromStdWString(line), *m_begunAt);
    // Begins a new line, with the prompt.
    el_wset(m_editor.get(), EL_UNBUFFERED, 0);
    el_wset(m_editor.get(), EL_UNBUFFERED, 1);
}

void TerminalLineEditor::finish()
{
    if (m_ended || !m_editor) {
        return;
    }
    m_ended = true;
    m_notifier.setEnabled(false);
    eraseLine();
    el_wset(m_editor.get(), EL_UNBUFFERED, 0);
    deliverEnd();
}

bool TerminalLineEditor::isLineEmpty() const
{
    const LineInfoW *line = el_wline(m_editor.get());
    return line->lastchar == line->buffer;
}

void TerminalLineEditor::followTerminalSize()
{
    const int columns = m_output.columns();
    if (columns == m_columns) {
        return;
    }
    const bool wasOneRow = rowsAboveCursor() == 0;
    m_columns = columns;
    if (wasOneRow && rowsAboveCursor() == 0) {
        eraseLine();
    } else {
        // Terminals differ in what they do to rows that no longer fit. What stands above must not be
        // erased by mistake: rather leave some of the line there.
        std::fflush(m_outputFile.get());
        m_output.writeRaw("\r\n\033[J");
    }
    el_resize(m_editor.get());
    el_wset(m_editor.get(), EL_REFRESH);
    std::fflush(m_outputFile.get());
}

int TerminalLineEditor::rowsAboveCursor() const
{
    const LineInfoW *line = el_wline(m_editor.get());
    std::wstring shown(currentPrompt());
    shown.append(line->buffer, line->cursor);
    int row = 0;
    int column = 0;
    for (const wchar_t c : shown) {
        const int width = std::max(wcwidth(c), 1);
        if (column + width > m_columns) {
            ++row;
            column = 0;
        }
        column += width;
        if (column == m_columns) {
            ++row;
            column = 0;
        }
    }
    return row;
}

void TerminalLineEditor::eraseLine()
{
    std::fflush(m_outputFile.get());
    if (const int rows = rowsAboveCursor(); rows > 0) {
        m_output.writeRaw("\033[" + QByteArray::number(rows) + 'A');
    }
    m_output.writeRaw("\r\033[J");
}

void TerminalLineEditor::printAbove(const std::function<void()> &print)
{
    if (!m_editor || m_ended || std::exchange(m_printing, true)) {
        print();
        return;
    }
    followTerminalSize();
    eraseLine();
    print();
    el_wset(m_editor.get(), EL_REFRESH);
    std::fflush(m_outputFile.get());
    m_printing = false;
}

} // namespace bram

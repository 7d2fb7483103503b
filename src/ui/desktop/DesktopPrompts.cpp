// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/DesktopPrompts.h"

#include "model/HonestDisplay.h"
#include "system/FileOpener.h"
#include "system/Files.h"
#include "system/Preferences.h"
#include "ui/desktop/BringToFront.h"

#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int boxWidth = 380;
constexpr auto positionProperty = "bramPosition"; ///< of a button: which answer it is

/// A question stays open while the window behind it changes: what it is about stands in it.
QString withNotes(const Question &question)
{
    QString text = honestDisplay(question.text).text;
    for (const QString &note : question.notes) {
        text += u"\n\n"_s + honestLine(note).text;
    }
    return text;
}

/// `text` has been made honest.
QMessageBox *makeMessageBox(const QString &title, const QString &text)
{
    auto *box = new QMessageBox(nullptr); // deletes itself when it is closed
    box->setWindowTitle(u"BRAM"_s);
    box->setTextFormat(Qt::PlainText);
    box->setText(title);
    box->setInformativeText(text);
    // The informative text has a label of its own, which would look for markup.
    for (QLabel *label : box->findChildren<QLabel *>()) {
        label->setTextFormat(Qt::PlainText);
    }
    if (auto *label = box->findChild<QLabel *>(u"qt_msgbox_label"_s)) {
        QFont bold = label->font();
        bold.setBold(true);
        label->setFont(bold);
    }
    return box;
}

/// By itself a box is as narrow as its title. To be called last: what is added to a box lays it out anew.
void widen(const QMessageBox &box)
{
    if (auto *grid = qobject_cast<QGridLayout *>(box.layout())) {
        grid->addItem(new QSpacerItem(boxWidth, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                      grid->rowCount(), 0, 1, grid->columnCount());
    }
}

/// In the upper part of the screen: the popup comes in the middle, above every other window, and would cover a
/// box there.
void placeClearOfPopup(QDialog &box)
{
    constexpr int partAbove = 8;
    const QWidget *active = QApplication::activeWindow();
    const QScreen *atPointer = QGuiApplication::screenAt(QCursor::pos());
    const QScreen *screen = active != nullptr ? active->screen()
        : atPointer != nullptr                ? atPointer
                                              : QGuiApplication::primaryScreen();
    const QRect area = screen->availableGeometry();
    box.move(area.center().x() - box.sizeHint().width() / 2,
             area.top() + area.height() / partAbove);
}

/// In the order given, which the platform's own order of roles would not keep. The harmless one is what
/// Escape and Enter mean.
///
/// Any other has to wait a moment: the second click of a double click on what was there before, the dialog of the
/// step before for one, is not meant for it.
QMessageBox *makeQuestionBox(const Question &question)
{
    QMessageBox *box = makeMessageBox(question.title, withNotes(question));
    box->setIcon(QMessageBox::Question);
    QList<QPushButton *> others;
    for (qsizetype i = 0; i < question.buttons.size(); ++i) {
        QPushButton *button = box->addButton(question.buttons.at(i), QMessageBox::ActionRole);
        button->setAutoDefault(false);
        button->setProperty(positionProperty, i);
        if (i == question.harmless) {
            box->setEscapeButton(button);
            box->setDefaultButton(button);
        } else if (question.harmless != Question::noButton) {
            others.append(button);
            button->setEnabled(false);
        }
    }
    const auto enable = [others, needsTick = question.needsTick](bool isTicked) {
        for (QPushButton *button : others) {
            const bool isOfTick = button->property(positionProperty).toLongLong() == needsTick;
            button->setEnabled(isOfTick == isTicked);
        }
    };
    if (question.needsTick != Question::noButton) {
        auto *tick = new QCheckBox(question.tick, box);
        box->setCheckBox(tick);
        QObject::connect(tick, &QCheckBox::toggled, box, enable);
        tick->setEnabled(false);
        QTimer::singleShot(QApplication::doubleClickInterval(), tick,
                           [tick] { tick->setEnabled(true); });
    }
    QTimer::singleShot(QApplication::doubleClickInterval(), box, [enable] { enable(false); });
    if (question.harmless == Question::noButton) {
        // Without a button for it, a message box can neither be closed nor left by Escape.
        QPushButton *none = box->addButton(QMessageBox::Cancel);
        none->setProperty(positionProperty, Question::noButton);
        none->hide();
        box->setEscapeButton(none);
    }
    widen(*box);
    return box;
}

Question replaceQuestion(const QString &path)
{
    return {.title = DesktopPrompts::tr("Replace the file?"),
            .text = DesktopPrompts::tr("There is a file already: %1").arg(path),
            .buttons = {DesktopPrompts::tr("Replace"), DesktopPrompts::tr("Cancel")},
            .harmless = 1};
}

/// Above the window that the operator is at, which stays usable.
void keepAbove(QDialog &dialog, QWidget *window)
{
    if (window != nullptr && window->isVisible() && !window->isMinimized()) {
        dialog.winId(); // from here on it has a window of the system
        dialog.windowHandle()->setTransientParent(window->windowHandle());
    }
}

QFileDialog *makeFileDialog(const FileQuestion &question, const QString &folder)
{
    auto *dialog = new QFileDialog(nullptr, question.title, folder); // deletes itself when closed
    switch (question.kind) {
    case FileQuestion::Kind::SaveFile:
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setFileMode(QFileDialog::AnyFile);
        // It would wait for the answer in an event loop of its own.
        dialog->setOption(QFileDialog::DontConfirmOverwrite);
        dialog->setDefaultSuffix(QFileInfo(question.suggestedName).suffix());
        if (dialog->defaultSuffix() == "txt"_L1) {
            dialog->setNameFilter(DesktopPrompts::tr("Plain text (*.txt)"));
        }
        dialog->selectFile(question.suggestedName);
        break;
    case FileQuestion::Kind::OpenFile:
        dialog->setFileMode(QFileDialog::ExistingFile);
        break;
    case FileQuestion::Kind::Folder:
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::ShowDirsOnly);
        break;
    }
    dialog->setLabelText(QFileDialog::Reject, DesktopPrompts::tr("Cancel"));
    if (!question.acceptLabel.isEmpty()) {
        dialog->setLabelText(QFileDialog::Accept, question.acceptLabel);
    }
    return dialog;
}
} // namespace

DesktopPrompts::DesktopPrompts(Preferences &preferences, FileOpener &opener)
    : m_preferences(preferences)
    , m_opener(opener)
{
}

DesktopPrompts::~DesktopPrompts()
{
    stop();
    delete m_open;
}

QCoro::Task<> DesktopPrompts::inform(Alert alert)
{
    co_await open(alert);
}

QCoro::Task<qsizetype> DesktopPrompts::ask(Question question)
{
    const qsizetype answer = co_await open(question);
    co_return answer;
}

QCoro::Task<std::optional<QString>> DesktopPrompts::askForFile(FileQuestion question)
{
    const QPointer self(this);
    for (;;) {
        const std::optional<QString> answer = co_await open(question);
        if (!self || !answer) {
            co_return std::nullopt;
        }
        self->rememberFolder(question.rememberedAs, *answer);
        if (question.kind != FileQuestion::Kind::SaveFile || !QFileInfo::exists(*answer)) {
            co_return answer;
        }
        const Question replace = replaceQuestion(*answer);
        const qsizetype isAgreed = co_await open(replace);
        if (!self) {
            co_return std::nullopt;
        }
        if (isAgreed == 0) {
            co_return answer;
        }
        question.suggestedName = QFileInfo(*answer).fileName();
    }
}

Reply<bool> DesktopPrompts::open(const Alert &alert)
{
    const ReplySource<bool> source(false);
    enqueue([alert, source] {
        QMessageBox *box = makeMessageBox(alert.title, honestDisplay(alert.text).text);
        box->setIcon(QMessageBox::Information);
        box->addButton(QMessageBox::Ok);
        widen(*box);
        connect(box, &QDialog::finished, box, [source] { source.answer(true); });
        return box;
    });
    return source.reply();
}

Reply<qsizetype> DesktopPrompts::open(const Question &question)
{
    const ReplySource<qsizetype> source(question.harmless);
    enqueue([question, source] {
        QMessageBox *box = makeQuestionBox(question);
        connect(box, &QDialog::finished, box, [box, question, source] {
            const QAbstractButton *clicked = box->clickedButton();
            source.answer(clicked == nullptr ? question.harmless
                                             : clicked->property(positionProperty).toLongLong());
        });
        return box;
    });
    return source.reply();
}

Reply<std::optional<QString>> DesktopPrompts::open(const FileQuestion &question)
{
    const ReplySource<std::optional<QString>> source {std::nullopt};
    enqueue([this, question, source] {
        QFileDialog *dialog = makeFileDialog(question, lastFolder(question.rememberedAs));
        connect(dialog, &QDialog::finished, dialog, [dialog, source](int result) {
            source.answer(result == QDialog::Accepted
                              ? std::optional(dialog->selectedFiles().value(0))
                              : std::nullopt);
        });
        return dialog;
    });
    return source.reply();
}

QCoro::Task<bool> DesktopPrompts::openFile(QString path)
{
    const FileOpened opened = co_await m_opener.open(path);
    co_return opened.has_value();
}

void DesktopPrompts::stop()
{
    m_isStopped = true;
    m_waiting.clear(); // their sources answer by going
    if (m_open == nullptr) {
        return;
    }
    // A file dialog warns of a name that is not there in an event loop of its own, and may only go once that
    // has ended.
    for (QDialog *warning : m_open->findChildren<QDialog *>()) {
        warning->reject();
    }
    m_open->reject();
}

void DesktopPrompts::enqueue(MakeDialog make)
{
    if (m_isStopped) {
        return;
    }
    m_waiting.push_back(std::move(make));
    if (m_open == nullptr) {
        showNext();
    } else {
        m_open->raise(); // whoever waits for the new one sees what it waits for
    }
}

void DesktopPrompts::recall()
{
    if (m_open != nullptr && m_open->isVisible()) { // not one that is answered and about to go
        bringToFront(*m_open);
    }
}

void DesktopPrompts::showNext()
{
    if (m_waiting.empty()) {
        return;
    }
    const MakeDialog make = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_open = make();
    m_open->setAttribute(Qt::WA_DeleteOnClose);
    m_open->setAttribute(Qt::WA_QuitOnClose, false);
    m_open->setModal(false);
    // Between two dialogs no window is the active one: then it is the one of before.
    if (QWidget *active = QApplication::activeWindow();
        active != nullptr && active->windowType() == Qt::Window) {
        m_above = active;
    }
    keepAbove(*m_open, m_above);
    if (qobject_cast<QMessageBox *>(m_open) != nullptr) {
        placeClearOfPopup(*m_open);
    }
    connect(m_open, &QObject::destroyed, this, [this] {
        if (!m_isStopped) {
            showNext();
        }
    });
    m_open->show();
    m_open->raise();
    m_open->activateWindow();
}

QString DesktopPrompts::lastFolder(const QString &operation) const
{
    const QString stored
        = m_preferences.text(u"dialogs.last-folder."_s + operation).value_or(QString());
    return QFileInfo(stored).isDir() ? stored : QDir::homePath();
}

void DesktopPrompts::rememberFolder(const QString &operation, const QString &chosenPath)
{
    const QFileInfo chosen(chosenPath);
    const QString folder = chosen.isDir() ? chosenPath : chosen.absolutePath();
    m_preferences.setText(u"dialogs.last-folder."_s + operation, folder);
    m_preferences.save();
}

} // namespace bram

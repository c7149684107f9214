#include "common/Prompter.h"

#include "common/ProgramTitle.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <algorithm>
#include <cstdio>

namespace corvalent {

namespace {

std::unique_ptr<Prompter>& installed()
{
    static std::unique_ptr<Prompter> prompter;
    return prompter;
}

// The filter is written as "Description (*.ext)|*.ext"; the dialog wants "Description (*.ext)".
QString dialogFilter(const QString& filter)
{
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList names;
    for (int i = 0; i < parts.size(); i += 2)
        names << parts.at(i);
    return names.join(QStringLiteral(";;"));
}

// The window a box or dialog belongs to: the modal window in front, else the active one, else a window that stays
// on top (the add-on's main window while the user works in another program), which would otherwise hide it.
QWidget* promptOwner()
{
    if (QWidget* modal = QApplication::activeModalWidget())
        return modal;
    if (QWidget* active = QApplication::activeWindow())
        return active;
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto onTop = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
        return window->isVisible() && window->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
    });
    return onTop != windows.end() ? *onTop : nullptr;
}

// Owned by `owner` and as high as it: a window manager that keeps owned windows in their own layer would otherwise
// put the box under an owner that stays on top.
void keepAboveOwner(QWidget* prompt, const QWidget* owner)
{
    if (owner && owner->windowFlags().testFlag(Qt::WindowStaysOnTopHint))
        prompt->setWindowFlag(Qt::WindowStaysOnTopHint);
}

QString askForFile(const QString& caption, const QString& filter, const QString& startFolder,
                   QFileDialog::AcceptMode mode)
{
    QWidget* owner = promptOwner();
    QFileDialog dialog(owner, Prompter::effectiveCaption(caption), startFolder, dialogFilter(filter));
    keepAboveOwner(&dialog, owner);
    dialog.setAcceptMode(mode);
    dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    // Replacing a file is the caller's decision.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

} // namespace

Prompter& Prompter::instance()
{
    auto& prompter = installed();
    if (!prompter) {
        if (qobject_cast<QApplication*>(QCoreApplication::instance()))
            prompter = std::make_unique<MessageBoxPrompter>();
        else
            prompter = std::make_unique<ConsolePrompter>();
    }
    return *prompter;
}

void Prompter::install(std::unique_ptr<Prompter> prompter)
{
    installed() = std::move(prompter);
}

int Prompter::defaultAnswer(int style)
{
    const bool yesNo = (style & 7) == YesNo;
    const bool second = (style & 0x300) == DefaultButton2;
    if (yesNo)
        return second ? No : Yes;
    return Ok;
}

QString Prompter::effectiveCaption(const QString& caption)
{
    return caption.isEmpty() ? QString::fromLatin1(kProgramTitle) : caption;
}

int MessageBoxPrompter::message(const QString& text, int style, const QString& caption)
{
    QWidget* owner = promptOwner();
    QMessageBox box(owner);
    keepAboveOwner(&box, owner);
    box.setWindowTitle(effectiveCaption(caption));
    // Message texts use carriage returns as line breaks.
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    box.setText(shown);
    switch (style & 0x70) {
    case Critical: box.setIcon(QMessageBox::Critical); break;
    case Question: box.setIcon(QMessageBox::Question); break;
    case Exclamation: box.setIcon(QMessageBox::Warning); break;
    case Information: box.setIcon(QMessageBox::Information); break;
    default: box.setIcon(QMessageBox::NoIcon); break;
    }
    if ((style & 7) == YesNo) {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(defaultAnswer(style) == No ? QMessageBox::No : QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
        return box.exec() == QMessageBox::Yes ? Yes : No;
    }
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
    return Ok;
}

QString MessageBoxPrompter::openFileName(const QString& caption, const QString& filter, const QString& startFolder)
{
    return askForFile(caption, filter, startFolder, QFileDialog::AcceptOpen);
}

QString MessageBoxPrompter::saveFileName(const QString& caption, const QString& filter, const QString& startFolder)
{
    return askForFile(caption, filter, startFolder, QFileDialog::AcceptSave);
}

int ConsolePrompter::message(const QString& text, int style, const QString& caption)
{
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    std::fprintf(stderr, "%s: %s\n", qUtf8Printable(effectiveCaption(caption)), qUtf8Printable(shown));
    return defaultAnswer(style);
}

QString ConsolePrompter::openFileName(const QString&, const QString&, const QString&)
{
    return QString();
}

QString ConsolePrompter::saveFileName(const QString&, const QString&, const QString&)
{
    return QString();
}

int RecordingPrompter::message(const QString& text, int style, const QString& caption)
{
    m_prompts.append({text, style, effectiveCaption(caption)});
    return m_answers.isEmpty() ? defaultAnswer(style) : m_answers.takeFirst();
}

QString RecordingPrompter::openFileName(const QString& caption, const QString&, const QString&)
{
    m_prompts.append({caption, -1, effectiveCaption(caption)});
    return m_fileNames.isEmpty() ? QString() : m_fileNames.takeFirst();
}

QString RecordingPrompter::saveFileName(const QString& caption, const QString& filter, const QString& startFolder)
{
    return openFileName(caption, filter, startFolder);
}

QStringList RecordingPrompter::texts() const
{
    QStringList result;
    for (const auto& p : m_prompts)
        result << p.text;
    return result;
}

} // namespace corvalent

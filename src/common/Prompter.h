#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <memory>

namespace corvalent {

// Every message box and file dialog goes through the installed prompter, so that tests can answer them and the
// command-line tool can print them. Styles and answers use the familiar message-box codes.
class Prompter {
public:
    enum Style : int {
        OkOnly = 0,
        YesNo = 4,
        Critical = 16,
        Question = 32,
        Exclamation = 48,
        Information = 64,
        DefaultButton2 = 256,
    };
    enum Answer : int { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

    virtual ~Prompter() = default;

    // Shows a message box and answers the button pressed. An empty caption means the program's title.
    virtual int message(const QString& text, int style, const QString& caption = QString()) = 0;

    // Asks for a file to open; answers "" when the user cancels.
    virtual QString openFileName(const QString& caption, const QString& filter, const QString& startFolder) = 0;

    // Asks for a file to create; answers "" when the user cancels. Replacing an existing file is the caller's
    // decision, so the dialog does not ask about it.
    virtual QString saveFileName(const QString& caption, const QString& filter, const QString& startFolder) = 0;

    // The prompter in use: the one installed, otherwise message boxes in a widget application and standard
    // error elsewhere.
    static Prompter& instance();
    // Installs a prompter for the rest of the program's life (or until the next install); nullptr restores the
    // default.
    static void install(std::unique_ptr<Prompter> prompter);

    // The answer the default button of `style` gives, as when the user just presses Enter.
    static int defaultAnswer(int style);
    // The caption actually shown for `caption`.
    static QString effectiveCaption(const QString& caption);
};

// Real message boxes and file dialogs.
class MessageBoxPrompter : public Prompter {
public:
    int message(const QString& text, int style, const QString& caption = QString()) override;
    QString openFileName(const QString& caption, const QString& filter, const QString& startFolder) override;
    QString saveFileName(const QString& caption, const QString& filter, const QString& startFolder) override;
};

// For programs without windows: prints each message to standard error and takes the default button.
class ConsolePrompter : public Prompter {
public:
    int message(const QString& text, int style, const QString& caption = QString()) override;
    QString openFileName(const QString& caption, const QString& filter, const QString& startFolder) override;
    QString saveFileName(const QString& caption, const QString& filter, const QString& startFolder) override;
};

// Records every prompt and answers from a script; with the script used up, it takes the default button and
// cancels file dialogs. Tests install one so that nothing ever waits for a person.
class RecordingPrompter : public Prompter {
public:
    struct Prompt {
        QString text;
        int style = 0;
        QString caption;
    };

    int message(const QString& text, int style, const QString& caption = QString()) override;
    QString openFileName(const QString& caption, const QString& filter, const QString& startFolder) override;
    QString saveFileName(const QString& caption, const QString& filter, const QString& startFolder) override;

    void scriptAnswer(int answer) { m_answers.append(answer); }
    void scriptFileName(const QString& fileName) { m_fileNames.append(fileName); }

    const QList<Prompt>& prompts() const { return m_prompts; }
    QStringList texts() const;
    void clear() { m_prompts.clear(); }

private:
    QList<Prompt> m_prompts;
    QList<int> m_answers;
    QStringList m_fileNames;
};

} // namespace corvalent

#pragma once

#include <QString>

namespace corvalent {

// Every text of the add-on that names the contact manager, in one place. With ACT! as the host they are ACT!'s
// texts word for word, Windows advice included; beside any other contact manager they carry its name and advice
// that works where it runs.
class HostTexts {
public:
    static inline const QString kActName = QStringLiteral("ACT!");

    explicit HostTexts(QString hostName);

    const QString& hostName() const { return m_name; }

    QString integrateMenuItem() const;
    QString integrateCaption() const;
    QString undoUpdateCaption() const;
    QString updateQuestion() const;
    QString restartQuestion() const;
    QString noDatabaseMessage() const;
    QString unreachableMessage() const;

private:
    bool isAct() const { return m_name == kActName; }

    QString m_name;
};

} // namespace corvalent

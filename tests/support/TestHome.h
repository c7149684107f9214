#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace corvalent::test {

// A private program folder and preferences store for one test program: CORVALENT_HOME and XDG_CONFIG_HOME point
// into a temporary folder that goes away with the test.
class TestHome {
public:
    TestHome();
    QString path() const { return m_dir.path(); }
    QString programFolder() const;
    QString file(const QString& relative) const;

    // Writes a file below the program folder (creating folders), bytes as given.
    QString write(const QString& relative, const QByteArray& bytes) const;
    static QByteArray read(const QString& path);

private:
    QTemporaryDir m_dir;
};

} // namespace corvalent::test

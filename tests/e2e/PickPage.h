#pragma once

// A web page on 127.0.0.1 whose selected text the program that serves it decides, for driving a real browser
// without typing into it. The page asks this server for the text to show (a request held open until there is new
// text), puts it in an element, selects that element as the user would by dragging over it, and reports back what
// the browser took as its selection. The browser is started once and the page changes under it; its window title
// follows ("Pick 1", "Pick 2" ...), so that a window lookup can tell which text is up. startFirefox() starts the
// browser on it with a fresh profile.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QPointer>
#include <QProcess>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <QUrlQuery>

#include <memory>
#include <optional>
#include <utility>

namespace corvalent::test {

// The user.js of a fresh Firefox profile: what it needs to open straight onto the page, with no first-run pages, no
// questions, and nothing fetched from the network on its own.
inline constexpr char kFirefoxUserJs[] =
    "user_pref(\"browser.shell.checkDefaultBrowser\", false);\n"
    "user_pref(\"browser.startup.homepage_override.mstone\", \"ignore\");\n"
    "user_pref(\"browser.aboutwelcome.enabled\", false);\n"
    "user_pref(\"startup.homepage_welcome_url\", \"\");\n"
    "user_pref(\"startup.homepage_welcome_url.additional\", \"\");\n"
    "user_pref(\"datareporting.policy.dataSubmissionEnabled\", false);\n"
    "user_pref(\"datareporting.policy.dataSubmissionPolicyBypassNotification\", true);\n"
    "user_pref(\"datareporting.policy.firstRunURL\", \"\");\n"
    "user_pref(\"datareporting.healthreport.uploadEnabled\", false);\n"
    "user_pref(\"toolkit.telemetry.reportingpolicy.firstRun\", false);\n"
    "user_pref(\"toolkit.telemetry.enabled\", false);\n"
    "user_pref(\"app.update.auto\", false);\n"
    "user_pref(\"app.update.enabled\", false);\n"
    "user_pref(\"app.normandy.enabled\", false);\n"
    "user_pref(\"extensions.update.enabled\", false);\n"
    "user_pref(\"browser.safebrowsing.malware.enabled\", false);\n"
    "user_pref(\"browser.safebrowsing.phishing.enabled\", false);\n"
    "user_pref(\"network.captive-portal-service.enabled\", false);\n"
    "user_pref(\"network.connectivity-service.enabled\", false);\n";

// Starts Firefox on a fresh profile in `profile` (a folder that need not exist yet), showing `url`, with what it
// writes to standard error in `log`. Firefox must draw on the X server, so headless mode is turned off whatever
// the caller's environment says.
inline bool startFirefox(QProcess& browser, const QString& profile, QProcessEnvironment env, const QString& url,
                         const QString& log)
{
    QDir().mkpath(profile);
    QFile prefs(profile + QStringLiteral("/user.js"));
    if (!prefs.open(QIODevice::WriteOnly | QIODevice::Truncate) || prefs.write(kFirefoxUserJs) <= 0)
        return false;
    prefs.close();
    env.remove(QStringLiteral("MOZ_HEADLESS"));
    env.insert(QStringLiteral("MOZ_CRASHREPORTER_DISABLE"), QStringLiteral("1"));
    browser.setProcessEnvironment(env);
    browser.setStandardOutputFile(QProcess::nullDevice());
    browser.setStandardErrorFile(log);
    browser.start(QStringLiteral("firefox-esr"), {QStringLiteral("--no-remote"), QStringLiteral("--new-instance"),
                                                  QStringLiteral("--profile"), profile, url});
    return browser.waitForStarted();
}

class PickPage {
public:
    // Listens on a free port of 127.0.0.1; false when it cannot.
    bool listen()
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                accept(socket);
        });
        return m_server.listen(QHostAddress::LocalHost, 0);
    }

    QString url() const { return QStringLiteral("http://127.0.0.1:%1/page.html").arg(m_server.serverPort()); }

    // Text put around the picked element, as much of a result page as the browser should lay out and copy from.
    // Set before the browser loads the page.
    void setSurroundings(const QString& before, const QString& after)
    {
        m_before = before;
        m_after = after;
    }

    // Shows `text` in the page and has it selected; answers the round's number, which the page's title carries.
    int show(const QString& text)
    {
        ++m_round;
        m_text = text;
        const QList<QPointer<QTcpSocket>> waiting = std::exchange(m_waiting, {});
        for (const QPointer<QTcpSocket>& socket : waiting) {
            if (socket)
                answerState(socket);
        }
        return m_round;
    }

    // What the browser reported as its selection once the page showed round `round`; nothing until then.
    std::optional<QString> selected(int round) const
    {
        return m_selected.contains(round) ? std::optional(m_selected.value(round)) : std::nullopt;
    }

    // The page as the browser gets it.
    QByteArray page() const
    {
        const auto escaped = [](const QString& text) { return text.toHtmlEscaped().toUtf8(); };
        // The picked text sits in a <pre> so that its line breaks are copied as they are given.
        return "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Pick 0</title></head><body>\n"
               "<div id=\"before\">" + escaped(m_before) + "</div>\n"
               "<pre id=\"pick\"></pre>\n"
               "<div id=\"after\">" + escaped(m_after) + "</div>\n"
               "<script>\n"
               "let round = 0;\n"
               "async function follow() {\n"
               "  for (;;) {\n"
               "    try {\n"
               "      const state = await (await fetch('/state?after=' + round, {cache: 'no-store'})).json();\n"
               "      round = state.round;\n"
               "      const pick = document.getElementById('pick');\n"
               "      pick.textContent = state.text;\n"
               "      window.getSelection().selectAllChildren(pick);\n"
               "      document.title = 'Pick ' + round;\n"
               "      await fetch('/selected?round=' + round + '&text=' +\n"
               "                  encodeURIComponent(window.getSelection().toString()), {cache: 'no-store'});\n"
               "    } catch (e) {\n"
               "      await new Promise(resume => setTimeout(resume, 100));\n"
               "    }\n"
               "  }\n"
               "}\n"
               "follow();\n"
               "</script>\n</body></html>\n";
    }

private:
    void accept(QTcpSocket* socket)
    {
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        auto request = std::make_shared<QByteArray>();
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, request] {
            request->append(socket->readAll());
            // GET requests only, so the head is the whole request.
            if (request->contains("\r\n\r\n"))
                answer(socket, request->left(request->indexOf("\r\n")));
        });
    }

    void answer(QTcpSocket* socket, const QByteArray& requestLine)
    {
        QObject::disconnect(socket, &QTcpSocket::readyRead, nullptr, nullptr);
        // The browser sends GET requests only: the method is not looked at.
        const QUrl target(QString::fromLatin1(requestLine.split(' ').value(1)));
        const QUrlQuery query(target);
        if (target.path() == QLatin1String("/page.html")) {
            reply(socket, "200 OK", "text/html; charset=utf-8", page());
        } else if (target.path() == QLatin1String("/state")) {
            // Held until there is text the page has not shown yet.
            if (query.queryItemValue(QStringLiteral("after")).toInt() < m_round)
                answerState(socket);
            else
                m_waiting.append(socket);
        } else if (target.path() == QLatin1String("/selected")) {
            m_selected.insert(query.queryItemValue(QStringLiteral("round")).toInt(),
                              query.queryItemValue(QStringLiteral("text"), QUrl::FullyDecoded));
            reply(socket, "200 OK", "text/plain", "ok");
        } else {
            reply(socket, "404 Not Found", "text/plain", "not here");
        }
    }

    void answerState(QTcpSocket* socket)
    {
        const QJsonObject state{{QStringLiteral("round"), m_round}, {QStringLiteral("text"), m_text}};
        reply(socket, "200 OK", "application/json", QJsonDocument(state).toJson(QJsonDocument::Compact));
    }

    static void reply(QTcpSocket* socket, const QByteArray& status, const QByteArray& type, const QByteArray& body)
    {
        socket->write("HTTP/1.1 " + status + "\r\nContent-Type: " + type + "\r\nContent-Length: " +
                      QByteArray::number(body.size()) + "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n" +
                      body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QString m_before;
    QString m_after;
    int m_round = 0;
    QString m_text;
    QList<QPointer<QTcpSocket>> m_waiting;
    QHash<int, QString> m_selected;
};

} // namespace corvalent::test

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace corvalent {

// What a server's folder holds, as far as it can be trusted: the plain file names in the server's order, and how
// many entries were dropped because they were not plain names (a path, "..", a hidden name, control characters,
// an overlong or undecodable name).
struct ServerListing {
    QStringList names;
    int ignored = 0;
};

// Longest name accepted from a server, in UTF-8 bytes.
inline constexpr int kMaxServerNameBytes = 200;

// A name that can only ever mean a file in the folder it is listed in.
bool IsPlainName(const QString& name);

// An FTP name list (NLST): one name a line. Lines end in CR LF; a bare LF inside a line is part of a (hostile)
// name, unless the server ends every line with a bare LF.
ServerListing ParseFtpNameList(const QByteArray& body);

// A directory-listing page as Apache, nginx or Python's http.server write it: the names are the targets of its
// links. Links to other folders, sort links and anchors are navigation, not entries, and are skipped silently.
ServerListing ParseHtmlListing(const QByteArray& body);

// The names shown for a server's service files: the ".isf" entries only, with "~" shown as ".".
QStringList ShownServiceNames(const QStringList& serverNames);

// The server's (and the Presets folder's) file name of a shown service name.
QString ServiceFileName(const QString& shownName);

} // namespace corvalent

#include "request/PostPage.h"

#include "common/ErrorTrap.h"
#include "common/Launcher.h"
#include "common/ProgramFolder.h"
#include "common/Windows1252.h"
#include "request/PostPageCleaner.h"
#include "request/PostalLookup.h"
#include "request/RequestBuilder.h"
#include "request/TextTransforms.h"
#include "request/ValueEncoding.h"

#include <QFile>
#include <QFileInfo>

namespace corvalent {

QString PostPagePath()
{
    return ProgramFolder::join(ProgramFolder::path(), kPostPageName);
}

namespace {

QString inputLine(const QString& name, const QString& value, bool utf8)
{
    if (utf8) {
        return QStringLiteral("<input type=text name=\"") + name.toHtmlEscaped() + QStringLiteral("\" value=\"")
            + value.toHtmlEscaped() + QStringLiteral("\">");
    }
    return QStringLiteral("<input type=text name=") + name + QStringLiteral(" value=") + Remove_Accents(value)
        + QStringLiteral(">");
}

} // namespace

QByteArray PostPageContent(const QString& serviceFile, const FieldTexts& fields)
{
    const bool utf8 = SendsUtf8(serviceFile);
    QStringList lines;
    // The page tells the browser its charset, which the browser then posts the form in.
    const QString top = utf8 ? QStringLiteral("<html><head><meta charset=\"utf-8\"></head><body>")
                             : QStringLiteral("<html><body>");
    lines << top << QStringLiteral("<span style=visibility:hidden>")
          << QStringLiteral("<form NAME=SearchQuick method=POST action='") + kPostalFormAction + QStringLiteral("'>");
    for (int row = 0; row < kFieldRows; ++row) {
        const auto name = RequestVariable(serviceFile, row);
        if (!name || fields[row].isEmpty())
            continue;
        lines << inputLine(*name, fields[row], utf8);
    }
    lines << QStringLiteral("</form></span>") << QStringLiteral("<script>")
          << QStringLiteral("document.SearchQuick.submit();") << QStringLiteral("</script>")
          << QStringLiteral("</body></html>");
    const QString page = lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
    return utf8 ? page.toUtf8() : Windows1252::encode(page);
}

void WritePostPage(const QString& serviceFile, const FieldTexts& fields)
{
    trappedSub(QStringLiteral("modPreset_POst: Sub WritePostPage"), [&] {
        const QString path = PostPagePath();
        const QByteArray content = PostPageContent(serviceFile, fields);

        // Removing first means a link planted at this path is dropped rather than written through, and the new
        // file is created with the user's permissions only.
        PostPageCleaner::instance().forget();
        if (QFileInfo(path).isSymLink() || QFileInfo::exists(path))
            QFile::remove(path);
        QFile page(path);
        if (!page.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
            throw Error(ErrorNumber::PermissionDenied, page.errorString());
        if (page.write(content) != content.size())
            throw Error(ErrorNumber::PermissionDenied, page.errorString());
        page.close();

        PostPageCleaner::instance().watch(path);
        Launcher::instance().open(path, ProgramFolder::path());
    });
}

} // namespace corvalent

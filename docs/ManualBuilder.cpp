// Turns the user's manual, one Markdown file per chapter, into Corvalent_manual.pdf and one self-contained HTML
// page, with nothing but Qt: a build needs no document toolchain of its own.
//
// Usage: corvalent-manual-builder PDF HTML CHAPTER.md...
//
// Every chapter starts on a new page. Anything that would give a manual with holes in it (a chapter that is missing,
// empty or has no "# " title, an image that cannot be read, fewer pages than chapters) ends the build with a message
// and exit code 1, and no output is left behind.
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QMimeDatabase>
#include <QPageLayout>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <QUrl>

#include <cstdio>
#include <stdexcept>

namespace {

const QString kTitle = QStringLiteral("Corvalent user's manual");

const QPageLayout kPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(18, 18, 18, 18),
                              QPageLayout::Millimeter);

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

[[noreturn]] void fail(const QString& message)
{
    throw Failure(message.toStdString());
}

QString readChapter(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(path + QStringLiteral(": cannot read the chapter (") + file.errorString() + QStringLiteral(")"));
    const QString text = QString::fromUtf8(file.readAll());
    if (!text.trimmed().startsWith(QStringLiteral("# ")))
        fail(path + QStringLiteral(": a chapter starts with its title, a line beginning with \"# \""));
    return text;
}

// The chapters as one document whose relative image paths are read from the chapters' folder.
void loadChapters(QTextDocument& document, const QStringList& chapters)
{
    const QString folder = QFileInfo(chapters.first()).absolutePath();
    QString markdown;
    for (const QString& chapter : chapters) {
        if (QFileInfo(chapter).absolutePath() != folder)
            fail(chapter + QStringLiteral(": every chapter must be in ") + folder + QStringLiteral(", where images are found"));
        markdown += readChapter(chapter) + QStringLiteral("\n\n");
    }
    document.setBaseUrl(QUrl::fromLocalFile(folder + QLatin1Char('/')));
    document.setMetaInformation(QTextDocument::DocumentUrl, QUrl::fromLocalFile(chapters.first()).toString());
    QFont font = document.defaultFont();
    font.setPointSize(10);
    document.setDefaultFont(font);
    document.setMarkdown(markdown);
    document.setMetaInformation(QTextDocument::DocumentTitle, kTitle);
    // Laid out once on the printed page's text area, in the 96-dots-per-inch units the document measures in, so that
    // what is measured here is what is printed.
    const QSizeF text = kPageLayout.paintRect(QPageLayout::Inch).size() * 96.0;
    document.setPageSize(text);
}

// Each first-level heading but the first begins a new page; answers how many chapters the document holds.
int breakPagesAtChapters(QTextDocument& document)
{
    int chapters = 0;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() != 1)
            continue;
        if (chapters++ > 0) {
            QTextBlockFormat format = block.blockFormat();
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            QTextCursor(block).setBlockFormat(format);
        }
    }
    return chapters;
}

struct ImageRef {
    int position;
    int length;
    QTextImageFormat format;
};

QList<ImageRef> images(const QTextDocument& document)
{
    QList<ImageRef> found;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.charFormat().isImageFormat())
                found.append({fragment.position(), fragment.length(), fragment.charFormat().toImageFormat()});
        }
    }
    return found;
}

void setFormat(QTextDocument& document, const ImageRef& image, const QTextImageFormat& format)
{
    QTextCursor cursor(&document);
    cursor.setPosition(image.position);
    cursor.setPosition(image.position + image.length, QTextCursor::KeepAnchor);
    cursor.setCharFormat(format);
}

// Every picture is loaded now, because one the document cannot load would be left out of the PDF without a word,
// and one wider than the page is shrunk to its width rather than cut.
void fitImages(QTextDocument& document)
{
    const qreal width = document.pageSize().width() - 2 * document.documentMargin();
    for (const ImageRef& image : images(document)) {
        const QImage picture =
            document.resource(QTextDocument::ImageResource, QUrl(image.format.name())).value<QImage>();
        if (picture.isNull())
            fail(QStringLiteral("image not found or unreadable: ") + image.format.name() +
                 QStringLiteral(" (relative to ") + document.baseUrl().toLocalFile() + QStringLiteral(")"));
        if (picture.width() <= width)
            continue;
        QTextImageFormat format = image.format;
        format.setWidth(width);
        format.setHeight(width * picture.height() / picture.width());
        setFormat(document, image, format);
    }
}

// Markdown tables come without rules, which leaves a table of keys and values hard to read on paper.
void ruleTables(QTextDocument& document)
{
    QList<QTextTable*> tables;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextTable* table = QTextCursor(block).currentTable();
        if (table && !tables.contains(table))
            tables.append(table);
    }
    for (QTextTable* table : tables) {
        QTextTableFormat format = table->format();
        format.setBorder(1);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(Qt::gray);
        format.setBorderCollapse(true);
        format.setCellPadding(3);
        format.setCellSpacing(0);
        table->setFormat(format);
    }
}

int countPages(const QString& pdfPath)
{
    QFile file(pdfPath);
    if (!file.open(QIODevice::ReadOnly))
        fail(pdfPath + QStringLiteral(": cannot read back the PDF"));
    // Page objects, not the page tree ("/Type /Pages").
    static const QRegularExpression page(QStringLiteral("/Type\\s*/Page(?![a-zA-Z])"));
    return int(QString::fromLatin1(file.readAll()).count(page));
}

void writePdf(QTextDocument& document, const QString& path, int chapters)
{
    {
        QPdfWriter writer(path);
        writer.setTitle(kTitle);
        writer.setCreator(QStringLiteral("corvalent-manual-builder"));
        writer.setPageLayout(kPageLayout);
        document.print(&writer);
    }
    const int pages = countPages(path);
    if (pages < chapters) {
        QFile::remove(path);
        fail(path + QStringLiteral(": ") + QString::number(pages) + QStringLiteral(" pages for ") +
             QString::number(chapters) + QStringLiteral(" chapters"));
    }
    std::printf("%s: %d pages, %d chapters\n", qPrintable(path), pages, chapters);
}

// The page must work when copied anywhere, so its pictures travel inside it.
void embedImages(QTextDocument& document)
{
    const QList<ImageRef> found = images(document);
    for (const ImageRef& image : found) {
        const QUrl url(image.format.name());
        const QString file = document.baseUrl().resolved(url).toLocalFile();
        QFile source(file);
        if (!source.open(QIODevice::ReadOnly))
            fail(QStringLiteral("image not found: ") + file);
        const QString mime = QMimeDatabase().mimeTypeForFile(file).name();
        QTextImageFormat format = image.format;
        format.setName(QStringLiteral("data:") + mime + QStringLiteral(";base64,") +
                       QString::fromLatin1(source.readAll().toBase64()));
        setFormat(document, image, format);
    }
}

void writeHtml(QTextDocument& document, const QString& path)
{
    embedImages(document);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(document.toHtml().toUtf8()) < 0 || !file.commit())
        fail(path + QStringLiteral(": cannot write the HTML page (") + file.errorString() + QStringLiteral(")"));
    std::printf("%s: written\n", qPrintable(path));
}

} // namespace

int main(int argc, char* argv[])
{
    // Fonts and page layout need a GUI application, never a screen: the build may run without a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() < 3) {
        std::fprintf(stderr, "usage: corvalent-manual-builder PDF HTML CHAPTER.md...\n");
        return 2;
    }
    const QString pdf = args[0];
    const QString html = args[1];
    try {
        QTextDocument document;
        loadChapters(document, args.mid(2));
        const int chapters = breakPagesAtChapters(document);
        if (chapters != args.size() - 2)
            fail(QString::number(args.size() - 2) + QStringLiteral(" chapter files hold ") + QString::number(chapters) +
                 QStringLiteral(" first-level headings: one per chapter, please"));
        fitImages(document);
        ruleTables(document);
        writePdf(document, pdf, chapters);
        writeHtml(document, html);
    } catch (const Failure& failure) {
        QFile::remove(pdf);
        std::fprintf(stderr, "corvalent-manual-builder: %s\n", failure.what());
        return 1;
    }
    return 0;
}

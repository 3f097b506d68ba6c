#include "storage/inspectionlog.h"

#include "platform/savefile.h"
#include "platform/unit.h"
#include "storage/dcim.h"
#include "storage/tornline.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <unistd.h>

namespace {

const QString kAssets = QStringLiteral(":/html_assets/html_assets/");
constexpr char kTableEnd[] = "</table>";
constexpr char kRowEnd[] = "</tr>\n";
constexpr char kHeadEnd[] = "</thead>\n";
constexpr char kOurTable[] = "box-table-a";
constexpr qint64 kTailWindow = 16LL * 1024; // bytes: the page's end after the table is far shorter
// Bytes, some hundred thousand rows: what is larger is no page of ours and is not read as a whole.
constexpr qint64 kLargestPage = 64 << 20;

constexpr std::array kAssetNames = {"bg.jpg",          "deleted.png", "imagecaptured.png",
                                    "information.png", "renamed.png", "quenvale_website_logo.png",
                                    "ruler.png",       "start.png",   "stop.png",
                                    "style.css",       "time.png"};

struct Operation
{
    const char *icon; // null: an empty cell
    bool links;       // the fourth cell is a link to the file
    const char *mark; // in the text line
};

// In the order of eLogFileOperation.
constexpr std::array kOperations = {
    Operation{"imagecaptured.png", true, "[+]"}, Operation{"start.png", true, "|--"},
    Operation{"stop.png", false, "--|"},         Operation{"deleted.png", false, "[X]"},
    Operation{"renamed.png", false, "[*]"},      Operation{nullptr, false, "[!]"},
};

QByteArray asset(const QString &name)
{
    QFile file(kAssets + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString escaped(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&amp;"))
        .replace(QLatin1Char('<'), QLatin1String("&lt;"))
        .replace(QLatin1Char('"'), QLatin1String("&quot;"));
}

QString folderName()
{
    return g_SavedFSInfo.currRootDirectory.section(QLatin1Char('/'), -1);
}

QString pageFile()
{
    return inCurrentFolder(folderName() + QLatin1String(".html"));
}

QString textFile()
{
    return inCurrentFolder(folderName() + QLatin1String(".txt"));
}

// What the template has from its "</table>" on.
QByteArray templateTail()
{
    const QByteArray page = asset(QStringLiteral("html.tmpl"));
    return page.mid(page.lastIndexOf(kTableEnd));
}

enum class Put { Done, NoTable, Failed };

// Writes row and page tail over the tail, as one write, then syncs.
Put putRow(QFile &page, const QByteArray &row)
{
    for (qint64 window = kTailWindow; window <= kLargestPage; window *= 16) {
        const qint64 start = std::max<qint64>(0, page.size() - window);
        page.seek(start);
        const QByteArray tail = page.read(page.size() - start);
        const qsizetype at = tail.lastIndexOf(kTableEnd);
        if (at >= 0) {
            const QByteArray bytes = row + tail.mid(at);
            page.seek(start + at);
            return page.write(bytes) == bytes.size() && ::fsync(page.handle()) == 0 ? Put::Done : Put::Failed;
        }
        if (start == 0)
            break;
    }
    return Put::NoTable;
}

} // namespace

namespace inspectionlog {

Entry entry(eLogFileOperation operation, unsigned short meter, const QString &time, const QString &name)
{
    const Operation &kind = kOperations[static_cast<size_t>(operation)];
    const QString metres = QStringLiteral("%1").arg(meter / 100.0, 6, 'f', 2, QLatin1Char('0'));
    const QString shown = escaped(name);
    const QString icon =
        kind.icon ? QStringLiteral("<img src=\"./.html_assets/%1\"/>").arg(QLatin1String(kind.icon))
                  : QString();
    const QString last = kind.links ? QStringLiteral("<a href=\"%1\">%2</a>").arg(shown, shown) : shown;
    return {QStringLiteral(
                "\n\t<tr>\n\t  <td>%1</td>\n\t  <td>%2</td>\n\t  <td>%3</td>\n\t  <td>%4</td>\n\t</tr>\n")
                .arg(metres, time, icon, last)
                .toUtf8(),
            QStringLiteral("%1%2  %3 %4\n")
                .arg(metres.leftJustified(8), time, QLatin1String(kind.mark), name)
                .toUtf8()};
}

} // namespace inspectionlog

void createHTMLAssets()
{
    const QString folder = inCurrentFolder(QStringLiteral(".html_assets/"));
    QDir().mkdir(unit::path(folder));
    for (const char *asciiName : kAssetNames) {
        const QString name = QString::fromLatin1(asciiName);
        if (!QFileInfo::exists(unit::path(folder + name)))
            savefile::write(folder + name, asset(name));
    }
}

void createLogHTMLlog(const QString &folder)
{
    if (QFileInfo::exists(unit::path(pageFile())))
        return;
    const QString name = escaped(folderName());
    const QDate today = QDate::currentDate();
    const bool ofTheDay = folder.isEmpty();
    QString page = QString::fromUtf8(asset(QStringLiteral("html.tmpl")));
    page.replace(QLatin1String("logfilename"), name);
    page.replace(QLatin1String("2014-06-26"), ofTheDay ? today.toString(QStringLiteral("dd-MM-yyyy")) : name);
    page.replace(QLatin1String("20140709.html"), ofTheDay ? name + QLatin1String(".html") : name);
    savefile::write(pageFile(), page.toUtf8());
}

void UpdateLogFiles(eLogFileOperation operation, unsigned short meter, const QString &path,
                    const QString &text)
{
    QFile page(unit::path(pageFile()));
    if (!page.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return;
    const bool named = operation == eFileRename || operation == eDamageCatelogChange;
    const auto [row, line] =
        inspectionlog::entry(operation, meter, QTime::currentTime().toString(QStringLiteral("hh:mm:ss")),
                             named ? text.trimmed() : path.section(QLatin1Char('/'), -1));
    if (putRow(page, row) != Put::Failed)
        appendLine(textFile(), line);
}

void mendInspectionLog()
{
    mendTornLine(textFile());
    QFile page(unit::path(pageFile()));
    if (!page.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered) ||
        page.size() > kLargestPage)
        return;
    page.seek(std::max<qint64>(0, page.size() - kTailWindow));
    const QByteArray end = page.readAll().trimmed();
    if (end.contains(kTableEnd) && end.endsWith("</html>"))
        return;
    page.seek(0);
    const QByteArray content = page.readAll();
    // A page without rows ends with the table's head.
    qsizetype wholeEnd = 0;
    for (const char *last : {kRowEnd, kHeadEnd}) {
        if (const qsizetype at = content.lastIndexOf(last); at >= 0)
            wholeEnd = std::max(wholeEnd, at + qsizetype(qstrlen(last)));
    }
    if (!content.contains(kOurTable) || wholeEnd == 0)
        return; // not a page of ours, or nothing of it is left
    page.close();
    savefile::write(pageFile(), content.left(wholeEnd) + templateTail());
}

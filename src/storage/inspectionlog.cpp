#include "storage/inspectionlog.h"

#include "platform/savefile.h"
#include "platform/unit.h"
#include "storage/position.h"
#include "storage/tornline.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <unistd.h>

namespace {

const QString kAssets = QStringLiteral(":/html_assets/html_assets/");
constexpr char kTableEnd[] = "</table>";
constexpr char kRowStart[] = "\n\t<tr>\n";
constexpr char kRowEnd[] = "</tr>\n";
constexpr char kHeadEnd[] = "</thead>\n";
constexpr char kOurTable[] = "box-table-a";
constexpr qint64 kTailWindow = 16LL * 1024; // bytes: the page's end after the table is far shorter
// Bytes, some hundred thousand rows: what is larger is no page of ours and is not read as a whole.
constexpr qint64 kLargestPage = 64 << 20;

// The board's count is signed, and below zero after a poll that failed.
constexpr unsigned short kLargestMeter = 32767;
constexpr char kUnknownMetres[] = "---.--"; // as wide as a length

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

QString unescaped(QString text)
{
    return text.replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
}

QByteArray textLine(const QString &metres, const QString &time, const char *mark, const QString &name)
{
    return QStringLiteral("%1%2  %3 %4\n")
        .arg(metres.leftJustified(8), time, QLatin1String(mark), name)
        .toUtf8();
}

QString folderName()
{
    return g_SavedFSInfo.currRootDirectory.name();
}

UnitPath pageFile()
{
    return inCurrentFolder(folderName() + QLatin1String(".html"));
}

UnitPath textFile()
{
    return inCurrentFolder(folderName() + QLatin1String(".txt"));
}

// What the template has from its "</table>" on.
const QByteArray &templateTail()
{
    static const QByteArray tail = [] {
        const QByteArray page = asset(QStringLiteral("html.tmpl"));
        return page.mid(page.lastIndexOf(kTableEnd));
    }();
    return tail;
}

// For an end of the page in which somebody wrote: nothing of it may be torn.
bool putRowWhole(QFile &page, qsizetype at, const QByteArray &row)
{
    page.seek(0);
    return savefile::write(pageFile(), page.readAll().insert(at, row));
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
            if (tail.mid(at) != templateTail() && page.size() <= kLargestPage)
                return putRowWhole(page, qsizetype(start) + at, row) ? Put::Done : Put::Failed;
            const QByteArray bytes = row + tail.mid(at);
            page.seek(start + at);
            return page.write(bytes) == bytes.size() && ::fsync(page.handle()) == 0 ? Put::Done : Put::Failed;
        }
        if (start == 0)
            break;
    }
    return Put::NoTable;
}

// Where the last whole row ends, or the head of a table without rows; 0: neither is there.
qsizetype endOfRows(const QByteArray &page)
{
    qsizetype end = 0;
    for (const char *last : {kRowEnd, kHeadEnd}) {
        if (const qsizetype at = page.lastIndexOf(last); at >= 0)
            end = std::max(end, at + qsizetype(qstrlen(last)));
    }
    return end;
}

// True for an end that a write of row and page tail left when it was cut off: some of their bytes, and behind
// those what is still there of the tail that was to be overwritten.
bool isTorn(QByteArray end)
{
    const QByteArray &tail = templateTail();
    qsizetype old = 0;
    while (old < std::min(end.size(), tail.size()) &&
           end.at(end.size() - 1 - old) == tail.at(tail.size() - 1 - old))
        ++old;
    if (old == tail.size())
        return false;
    end.chop(old);
    static const QRegularExpression ours(
        QStringLiteral("^\t?(\n\t<tr>\n\t  <td>[-0-9.]+</td>\n\t  <td>[0-9:]+</td>\n\t  "
                       "<td>(<img src=\"\\./\\.html_assets/[a-z]+\\.png\"/>)?</td>\n\t  "
                       "<td>(<a href=\"[^\"]*\">)?[^<]*(</a>)?</td>\n\t</tr>\n)?%1\\z")
            .arg(QRegularExpression::escape(QString::fromLatin1(tail))));
    return end.isEmpty() ||
           ours.match(QString::fromLatin1(end), 0, QRegularExpression::PartialPreferCompleteMatch)
               .hasPartialMatch();
}

// The text line of the last row, with which `rows` ends; empty when that is none of ours.
QByteArray lineOfRow(const QByteArray &rows)
{
    static const QRegularExpression cells(QStringLiteral(
        "<td>([^<]*)</td>\\s*<td>([^<]*)</td>\\s*<td>(?:<img src=\"\\./\\.html_assets/([^\"]*)\"/>)?"
        "</td>\\s*<td>(?:<a [^>]*>)?([^<]*)(?:</a>)?</td>\\s*</tr>\\n$"));
    const auto row = cells.match(QString::fromUtf8(rows.mid(rows.lastIndexOf("<tr>"))));
    const auto kind = std::find_if(kOperations.begin(), kOperations.end(), [&](const Operation &operation) {
        return row.captured(3) == QLatin1String(operation.icon);
    });
    if (!row.hasMatch() || kind == kOperations.end())
        return {};
    return textLine(row.captured(1), row.captured(2), kind->mark, unescaped(row.captured(4)));
}

} // namespace

namespace inspectionlog {

Entry entry(eLogFileOperation operation, unsigned short meter, const QString &time, const QString &name)
{
    const Operation &kind = kOperations[static_cast<size_t>(operation)];
    const QString metres = meter > kLargestMeter
                               ? QString::fromLatin1(kUnknownMetres)
                               : QStringLiteral("%1").arg(meter / 100.0, 6, 'f', 2, QLatin1Char('0'));
    const QString shown = escaped(name);
    const QString icon =
        kind.icon ? QStringLiteral("<img src=\"./.html_assets/%1\"/>").arg(QLatin1String(kind.icon))
                  : QString();
    const QString last = kind.links ? QStringLiteral("<a href=\"%1\">%2</a>").arg(shown, shown) : shown;
    return {QStringLiteral(
                "\n\t<tr>\n\t  <td>%1</td>\n\t  <td>%2</td>\n\t  <td>%3</td>\n\t  <td>%4</td>\n\t</tr>\n")
                .arg(metres, time, icon, last)
                .toUtf8(),
            textLine(metres, time, kind.mark, name)};
}

} // namespace inspectionlog

void createHTMLAssets()
{
    const UnitPath folder = inCurrentFolder(QStringLiteral(".html_assets"));
    QDir().mkdir(unit::path(folder));
    for (const char *asciiName : kAssetNames) {
        const QString name = QString::fromLatin1(asciiName);
        if (!QFileInfo::exists(unit::path(folder / name)))
            savefile::write(folder / name, asset(name));
    }
}

void createLogHTMLlog(const UnitPath &folder)
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

void UpdateLogFiles(eLogFileOperation operation, unsigned short meter, const QString &fileName,
                    const QString &text, const QTime &time)
{
    QFile page(unit::path(pageFile()));
    if (!page.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return;
    const bool named = operation == eFileRename || operation == eDamageCatelogChange;
    const auto [row, line] = inspectionlog::entry(operation, meter, time.toString(QStringLiteral("hh:mm:ss")),
                                                  named ? text.trimmed() : fileName);
    if (putRow(page, row) != Put::Failed)
        appendLine(textFile(), line);
}

void mendInspectionLog()
{
    QFile page(unit::path(pageFile()));
    if (!page.open(QIODevice::ReadOnly) || page.size() > kLargestPage)
        return;
    const qint64 start = std::max<qint64>(0, page.size() - kTailWindow);
    page.seek(start);
    const QByteArray tail = page.readAll();
    const qsizetype end = endOfRows(tail);
    const QByteArray rows = tail.left(end);
    const QByteArray line = lineOfRow(rows);
    completeLine(textFile(), line, lineOfRow(rows.left(rows.lastIndexOf(kRowStart))));
    const bool isOurs = !line.isEmpty() || rows.endsWith(kHeadEnd);
    if (!isOurs || !isTorn(tail.mid(end)))
        return;
    page.seek(0);
    const QByteArray whole = page.read(start + end);
    if (whole.contains(kOurTable))
        savefile::write(pageFile(), whole + templateTail());
}

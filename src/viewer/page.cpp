#include "viewer/page.h"

#include <QFile>

#include <algorithm>
#include <array>

namespace {

constexpr char kSymbolsPlace[] = "<!-- symbols -->";

QByteArray resource(const char *name)
{
    QFile file(QStringLiteral(":/viewer/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The page has the library of drawings in itself; a style that stands inside a page is not allowed, the rules
// for the drawings are in the page's style.
QByteArray pageWithSymbols()
{
    QByteArray symbols = resource("symbols.svg");
    const qsizetype style = symbols.indexOf("<style>");
    symbols.remove(style, symbols.indexOf("</style>") - style + qsizetype(sizeof "</style>") - 1);
    return resource("page.html").replace(kSymbolsPlace, symbols);
}

struct Part
{
    const char *address;
    const char *type;
    QByteArray (*content)();
};
constexpr std::array kParts = {
    Part{"/", "text/html; charset=utf-8", pageWithSymbols},
    Part{"/page.css", "text/css; charset=utf-8", [] { return resource("page.css"); }},
    Part{"/page.js", "text/javascript; charset=utf-8", [] { return resource("page.js"); }},
};

} // namespace

namespace viewer {

Reply pageReply(const QByteArray &address)
{
    const auto part = std::find_if(kParts.begin(), kParts.end(),
                                   [&address](const Part &each) { return address == each.address; });
    return part == kParts.end() ? refusal(MHD_HTTP_NOT_FOUND) : contentReply(part->content(), part->type);
}

} // namespace viewer

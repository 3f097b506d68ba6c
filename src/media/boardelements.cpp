#include "media/boardelements.h"

#include "media/gst_includes.h"
#include "platform/unit.h"

#include <QFileInfo>
#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <vector>

namespace {

struct Candidate
{
    const char *fragment;
    const char *queueOption = "";
};

struct Role
{
    const char *key; // in board.conf
    QString ElementRoles::*fragment;
    std::vector<Candidate> candidates;
    const char *package; // Debian package of the last candidate
};

// Of each role the board's own element first, then what other Linux boards have.
const std::array<Role, 7> &roleTable()
{
    static const std::array<Role, 7> table = {{
        {"camera",
         &ElementRoles::camera,
         {{"mfw_v4lsrc", "queue-size=10"}, {"v4l2src"}},
         "gstreamer1.0-plugins-good"},
        {"display",
         &ElementRoles::display,
         {{"mfw_v4lsink deinterlace=true disp-width=720 disp-height=576 axis-top=24 axis-left=80"},
          {"kmssink render-rectangle=<80,24,720,576>"},
          {"waylandsink render-rectangle=<80,24,720,576>"}},
         "gstreamer1.0-plugins-bad"},
        {"converter",
         &ElementRoles::converter,
         {{"mfw_ipucsc"}, {"videoconvert"}},
         "gstreamer1.0-plugins-base"},
        {"jpegencoder",
         &ElementRoles::jpegEncoder,
         {{"vpuenc codec=12"},
          {"videobalance name=fullrange ! v4l2jpegenc"},
          {"videobalance name=fullrange ! jpegenc"}},
         "gstreamer1.0-plugins-good"},
        {"mp3encoder",
         &ElementRoles::mp3Encoder,
         {{"mfw_mp3encoder"}, {"lamemp3enc ! mpegaudioparse"}},
         "gstreamer1.0-plugins-good"},
        {"microphone", &ElementRoles::microphone, {{"alsasrc"}}, "gstreamer1.0-alsa"},
        {"speaker", &ElementRoles::speaker, {{"alsasink"}}, "gstreamer1.0-alsa"},
    }};
    return table;
}

QString elementName(const QString &segment)
{
    return segment.trimmed().section(QLatin1Char(' '), 0, 0);
}

bool isInstalled(const QString &fragment)
{
    const QStringList segments = fragment.split(QStringLiteral(" ! "));
    return std::all_of(segments.begin(), segments.end(), [](const QString &segment) {
        const QString name = elementName(segment);
        if (name.contains(QLatin1Char('/')))
            return true; // a caps filter
        const GstOwner<GstElementFactory> factory(gst_element_factory_find(name.toUtf8().constData()));
        return factory != nullptr;
    });
}

// For a place between double quotes in a launch description.
QString quotable(QString path)
{
    return path.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('"'), QLatin1String("\\\""));
}

ElementRoles findRoles()
{
    const QString file = unit::path(u"/home/root/tubix4_app/board.conf"_unit);
    const QSettings settings(file, QSettings::IniFormat);
    ElementRoles roles;
    for (const Role &role : roleTable()) {
        QString fragment = settings.value(QStringLiteral("roles/") + QLatin1String(role.key)).toString();
        fragment.replace(QStringLiteral("${root}"), quotable(unit::root()));
        const char *queueOption = "";
        if (fragment.isEmpty()) {
            const auto found =
                std::find_if(role.candidates.begin(), role.candidates.end(), [](const Candidate &candidate) {
                    return isInstalled(QString::fromLatin1(candidate.fragment));
                });
            const Candidate &chosen = found != role.candidates.end() ? *found : role.candidates.back();
            fragment = QString::fromLatin1(chosen.fragment);
            queueOption = chosen.queueOption;
        }
        if (!isInstalled(fragment)) {
            std::fprintf(stderr, "tubix4: nothing installed fills the role '%s' (%s); package: %s\n",
                         role.key, qUtf8Printable(fragment), role.package);
        }
        roles.*role.fragment = fragment;
        if (role.fragment == &ElementRoles::camera)
            roles.cameraQueueOption = QString::fromLatin1(queueOption);
    }
    return roles;
}

// Found at the first use, on the GUI thread.
std::optional<ElementRoles> g_roles;

} // namespace

bool displayDraws(const ElementRoles &roles)
{
    return elementName(roles.display) != QLatin1String("fakesink");
}

QString withProperties(const QString &fragment, const QString &properties)
{
    if (properties.isEmpty())
        return fragment;
    const qsizetype end = fragment.indexOf(QStringLiteral(" !"));
    return QString(fragment).insert(end < 0 ? fragment.size() : end, QLatin1Char(' ') + properties);
}

const ElementRoles &boardElements()
{
    if (!g_roles)
        g_roles = findRoles();
    return *g_roles;
}

void giveUpDisplay()
{
    std::fprintf(stderr,
                 "tubix4: the display role '%s' cannot be opened: the window draws the picture itself\n",
                 qUtf8Printable(boardElements().display));
    g_roles->display = QStringLiteral("fakesink sync=true");
}

void resetBoardElementsForTests()
{
    g_roles.reset();
}

#include "hand.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QThread>
#include <QWidget>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kPatience = 30000; // ms until a screen counts as missing
constexpr int kGlance = 20;      // ms between two looks
constexpr int kSettle = 400;     // ms that a screen gets before its picture is taken
constexpr int kJpegQuality = 88;

void sendMouse(QWidget *widget, QEvent::Type type, QPoint place)
{
    const bool released = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, place, widget->mapToGlobal(place),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      released ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void tap(QWidget *widget, QPoint place)
{
    sendMouse(widget, QEvent::MouseButtonPress, place);
    sendMouse(widget, QEvent::MouseButtonRelease, place);
}

// Where a finger's events go: views get them on their viewport.
QWidget *skin(QWidget *widget)
{
    const auto *area = qobject_cast<QAbstractScrollArea *>(widget);
    return area ? area->viewport() : widget;
}

} // namespace

Hand::Hand(QWidget &window, const QString &unitTool, const QString &unitFolder, const QString &pictures)
    : m_window(window), m_unitTool(unitTool), m_unitFolder(unitFolder), m_pictures(pictures)
{
}

void Hand::onGui(const std::function<void()> &action) const
{
    QMetaObject::invokeMethod(qApp, action, Qt::BlockingQueuedConnection);
}

void Hand::startOnGui(const std::function<void()> &action) const
{
    QMetaObject::invokeMethod(qApp, action, Qt::QueuedConnection);
}

QWidget *Hand::find(const char *name) const
{
    QWidget *dialog = QApplication::activeModalWidget();
    QWidget *widget = (dialog ? dialog : &m_window)->findChild<QWidget *>(QLatin1String(name));
    return widget && widget->isVisible() && widget->isEnabled() ? widget : nullptr;
}

bool Hand::sees(const char *name) const
{
    return find(name) != nullptr;
}

void Hand::waitFor(const char *what, const std::function<bool()> &condition)
{
    for (int waited = 0; waited < kPatience; waited += kGlance) {
        bool holds = false;
        onGui([&] { holds = condition(); });
        if (holds)
            return;
        pause(kGlance);
    }
    std::fprintf(stderr, "tour: waited in vain for %s\n", what);
    look("where-it-stopped");
    std::_Exit(1);
}

void Hand::waitForScreen(const char *name)
{
    waitFor(name, [this, name] { return sees(name); });
}

void Hand::pause(int milliseconds)
{
    QThread::msleep(static_cast<unsigned long>(milliseconds));
}

void Hand::touch(const char *name)
{
    waitForScreen(name);
    startOnGui([this, name] {
        if (QWidget *widget = find(name))
            tap(skin(widget), skin(widget)->rect().center());
    });
}

void Hand::touchItem(const char *list, int row)
{
    waitForScreen(list);
    startOnGui([this, list, row] {
        auto *view = qobject_cast<QAbstractItemView *>(find(list));
        if (!view)
            return;
        const QModelIndex index = view->model()->index(row, 0);
        view->scrollTo(index);
        tap(view->viewport(), view->visualRect(index).center());
    });
}

void Hand::drag(const char *view, QPoint from, QPoint to)
{
    waitForScreen(view);
    onGui([this, view, from, to] {
        QWidget *surface = skin(find(view));
        sendMouse(surface, QEvent::MouseButtonPress, from);
        sendMouse(surface, QEvent::MouseMove, (from + to) / 2);
        sendMouse(surface, QEvent::MouseMove, to);
        sendMouse(surface, QEvent::MouseButtonRelease, to);
    });
}

void Hand::typeText(const QString &text)
{
    for (const QChar letter : text) {
        waitForScreen("gridLayoutWidget");
        startOnGui([letter] {
            for (auto *key : QApplication::activeModalWidget()->findChildren<QPushButton *>()) {
                if (key->isVisible() && key->text() == letter)
                    tap(key, key->rect().center());
            }
        });
        pause(60);
    }
}

void Hand::unit(const QStringList &command)
{
    if (QProcess::execute(m_unitTool, QStringList{QStringLiteral("--unit"), m_unitFolder} + command) != 0) {
        std::fprintf(stderr, "tour: the unit did not take '%s'\n",
                     qUtf8Printable(command.join(QLatin1Char(' '))));
        std::_Exit(1);
    }
}

void Hand::putOnCard(const QString &file, const QByteArray &content)
{
    QFile target(m_unitFolder + QStringLiteral("/media/mmcblk1p1/") + file);
    if (!target.open(QIODevice::WriteOnly) || target.write(content) != content.size()) {
        std::fprintf(stderr, "tour: cannot write %s\n", qUtf8Printable(target.fileName()));
        std::_Exit(1);
    }
}

// The window with what stands in front of it: dialogs, each over the one that opened it.
QImage Hand::screen() const
{
    QImage picture = m_window.grab().toImage();
    QWidgetList dialogs;
    for (QWidget *widget = QApplication::activeModalWidget(); widget && widget != &m_window;
         widget = widget->parentWidget() ? widget->parentWidget()->window() : nullptr)
        dialogs.prepend(widget);
    QPainter painter(&picture);
    for (QWidget *dialog : dialogs)
        painter.drawPixmap(m_window.mapFromGlobal(dialog->mapToGlobal(QPoint())), dialog->grab());
    return picture;
}

void Hand::look(const char *picture)
{
    pause(kSettle);
    onGui([this, picture] {
        const QString file = m_pictures + QLatin1Char('/') + QLatin1String(picture) + QLatin1String(".jpg");
        if (!screen().save(file, "JPG", kJpegQuality)) {
            std::fprintf(stderr, "tour: cannot write %s\n", qUtf8Printable(file));
            std::_Exit(1);
        }
        std::printf("tour: %s\n", picture);
        std::fflush(stdout);
    });
}

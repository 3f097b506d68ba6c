#include "app/appearance.h"

#include "media/overlayfont.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QWidget>

namespace {

// A disabled picture is the same picture, faint. The style's own grey would be lighter than the enabled one
// on our dark ground.
class UnitStyle : public QProxyStyle
{
public:
    UnitStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap &pixmap,
                                const QStyleOption *option) const override
    {
        if (mode != QIcon::Disabled)
            return QProxyStyle::generatedIconPixmap(mode, pixmap, option);
        QPixmap faint(pixmap.size());
        faint.fill(Qt::transparent);
        QPainter painter(&faint);
        painter.setOpacity(0.35);
        painter.drawPixmap(0, 0, pixmap);
        return faint;
    }

    // A button moves under the finger: the only sign that a glove gets.
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        if (metric == PM_ButtonShiftHorizontal || metric == PM_ButtonShiftVertical)
            return 2;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
};

QPalette darkPalette()
{
    const QColor ground(0x0b, 0x0f, 0x13);
    const QColor tile(0x1a, 0x21, 0x28);
    QPalette palette(tile, ground);
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Base, ground);
    palette.setColor(QPalette::Highlight, QColor(0x06, 0x94, 0xc4));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

QtMessageHandler handlerBelow = nullptr;

// What the thumbnail list's sheet asks for comes by another rule: no news for the journal at each start.
void dropAlphaWarning(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.endsWith(QLatin1String("alpha given: 'rgb 164, 164, 164, 50%'")))
        handlerBelow(type, context, message);
}

} // namespace

void fixPixels()
{
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    qputenv("QT_FONT_DPI", "96");
    qunsetenv("QT_SCALE_FACTOR");
    qunsetenv("QT_SCREEN_SCALE_FACTORS");
    qunsetenv("QT_STYLE_OVERRIDE");
    qunsetenv("QT_QPA_PLATFORMTHEME");
    QApplication::setDesktopSettingsAware(false);
    fixOverlayFont();
}

void fixLook()
{
    handlerBelow = qInstallMessageHandler(dropAlphaWarning);
    QApplication::setStyle(new UnitStyle);
    QApplication::setPalette(darkPalette());
    QFont font(QStringLiteral("Liberation Sans"));
    font.setPixelSize(13);
    QApplication::setFont(font);
}

void showOnDesk(QWidget &window)
{
    window.setWindowState(Qt::WindowNoState);
    window.setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowMinimizeButtonHint |
                          Qt::WindowCloseButtonHint);
    window.setFixedSize(800, 600);
    window.move(0, 0);
    window.show();
}

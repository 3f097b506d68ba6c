// A touch belongs to its screen, and every screen shows what the rules say.
#include "app/screen.h"

#include <QRandomGenerator>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

constexpr QPoint kCapture(40, 485);
constexpr QPoint kMode(40, 337);
constexpr QPoint kZoomPlus(40, 190);

// As a touch panel does it: the window system's event, then whatever lies there.
void tap(Screen &screen, QPoint place)
{
    QTest::mouseClick(screen.window.windowHandle(), Qt::LeftButton, {}, place);
}

// The first widget that is not as the rules have it; empty: none.
QByteArray differenceOf(const Screen &screen)
{
    const ScreenFacts facts = screen.window.screenFacts();
    for (const WidgetRule &rule : widgetRules()) {
        const auto *widget = screen.find<QWidget>(rule.widget);
        if (rule.isVisible && widget->isHidden() == rule.isVisible(facts))
            return QByteArray(rule.widget) + (widget->isHidden() ? " is hidden" : " is shown");
        if (rule.isEnabled && widget->isEnabledTo(widget->parentWidget()) != rule.isEnabled(facts))
            return QByteArray(rule.widget) + " takes touches, or does not, against the rules";
    }
    return {};
}

template <typename T> T oneOf(const QList<T> &all, QRandomGenerator &dice)
{
    return all[dice.bounded(all.size())];
}

// Touches whatever is offered; the exit button would end the walk.
void touchSomething(const QWidget *where, QRandomGenerator &dice)
{
    QList<QPushButton *> buttons;
    for (auto *button : where->findChildren<QPushButton *>()) {
        if (button->isVisible() && button->isEnabled() &&
            button->objectName() != "btn_tools_ExitApplication"_L1)
            buttons << button;
    }
    if (!buttons.isEmpty())
        QTest::mouseClick(oneOf(buttons, dice), Qt::LeftButton);
}

// Answers dialogs with whatever they offer, every fourth time with no.
class Answers : public QObject
{
public:
    explicit Answers(QRandomGenerator &dice) : m_dice(dice) { answer(); }

private:
    void answer()
    {
        QTimer::singleShot(15, this, &Answers::answer); // anew: an answer may open the next dialog
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (dialog && ++m_touches % 4 != 0)
            touchSomething(dialog, m_dice);
        else if (dialog)
            dialog->reject();
    }

    QRandomGenerator &m_dice;
    int m_touches = 0;
};

// What hands and hardware do, and what the window's own clocks tell.
void actOfTheWorld(Screen &screen, QRandomGenerator &dice)
{
    static const QList<QStringList> acts = {
        {u"card"_s, u"remove"_s},  {u"card"_s, u"insert"_s}, {u"card"_s, u"insert"_s},
        {u"card"_s, u"corrupt"_s}, {u"usb"_s, u"attach"_s},  {u"usb"_s, u"detach"_s},
        {u"camera"_s, u"lost"_s},  {u"camera"_s, u"back"_s}, {u"battery"_s, u"low"_s}};
    switch (dice.bounded(4)) {
    case 0:
        screen.window.popUpExpired();
        break;
    case 1:
        screen.window.genericDelayTimerExpired();
        break;
    case 2:
        screen.passSeconds();
        break;
    default:
        screen.folder.control(oneOf(acts, dice));
        break;
    }
}

void step(Screen &screen, QRandomGenerator &dice)
{
    auto *list = screen.find<QListWidget>("listW_ThumbnailViewer");
    const quint32 choice = dice.bounded(20U);
    if (choice == 0)
        actOfTheWorld(screen, dice);
    else if (choice < 6 && list->isVisible() && list->count() > 0)
        screen.select(int(dice.bounded(list->count())));
    else
        touchSomething(&screen.window, dice);
    QCoreApplication::processEvents();
}

} // namespace

class TestScreens : public HeardTest
{
    Q_OBJECT

private slots:
    // Stop touched twice by a nervous finger: the film ends, and no new one starts.
    void aSecondTouchIsNotForTheNextScreen()
    {
        Screen screen;
        screen.waitForCard();
        tap(screen, kMode);
        tap(screen, kCapture);
        screen.waitForFilmAt("00:00:01");
        tap(screen, kCapture);
        tap(screen, kCapture);
        QTest::qWait(100);
        tap(screen, kCapture);
        QTRY_COMPARE(screen.window.mainState(), eStateLive);
        QTRY_VERIFY(screen.pictureRuns());
        QCOMPARE(screen.log().count("|-- TUBX"), 1);
        // On a screen that stays every touch counts.
        QTest::qWait(300);
        for (int i = 0; i < 8; ++i)
            tap(screen, kZoomPlus);
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"1.8x"_s);
    }

    // A question that is answered twice: the second touch does not land on what lies under it.
    void aSecondAnswerIsNotForTheScreenBelow()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 411);
        QTRY_COMPARE(screen.window.mainState(), eStateToolsMenu);
        const bool microphone = screen.settings().bMicrophoneActive;
        QPoint answer;
        whenOpen([&](QDialog *question) {
            auto *cancel = question->findChild<QPushButton *>(u"btn_Cancel"_s);
            answer = screen.window.mapFromGlobal(cancel->mapToGlobal(cancel->rect().center()));
            cancel->click();
        });
        screen.button("btn_tools_Format_Media")->click();
        tap(screen, answer);
        tap(screen, screen.button("btn_tools_Microphone_On_Off")->geometry().center());
        QCOMPARE(bool(screen.settings().bMicrophoneActive), microphone);
        QTest::qWait(310);
        tap(screen, screen.button("btn_tools_Microphone_On_Off")->geometry().center());
        QCOMPARE(bool(screen.settings().bMicrophoneActive), !microphone);
    }

    // A seed of one's own and a longer walk: TUBIX_WALK="SEED STEPS".
    void everyStepOfAWalkShowsWhatTheRulesSay()
    {
        const QStringList own = qEnvironmentVariable("TUBIX_WALK").split(u' ', Qt::SkipEmptyParts);
        const quint32 seed = own.isEmpty() ? 4711 : own[0].toUInt();
        const int steps = own.size() < 2 ? 500 : own[1].toInt();
        Screen screen;
        screen.waitForCard();
        QRandomGenerator dice(seed);
        const Answers answers(dice);
        for (int i = 0; i < steps; ++i) {
            step(screen, dice);
            const QByteArray difference = differenceOf(screen);
            QVERIFY2(difference.isEmpty(), QByteArray(difference + ", step " + QByteArray::number(i) + ", " +
                                                      stateName(screen.window.mainState()))
                                               .constData());
        }
        for (const QStringList &act : {QStringList{u"camera"_s, u"back"_s},
                                       {u"usb"_s, u"detach"_s},
                                       {u"card"_s, u"remove"_s},
                                       {u"card"_s, u"insert"_s}})
            screen.folder.control(act);
        // Whatever page it is, what lies at the bottom left leads back.
        const auto isBack = [&] {
            screen.passSeconds();
            if (screen.window.mainState() == eStateVideoInputPipelineFailure)
                screen.button("btn_menu_Tools")->click();
            else if (screen.window.mainState() != eStateLive)
                screen.touch(40, 559);
            return screen.window.mainState() == eStateLive && !QApplication::activeModalWidget() &&
                   screen.pictureRuns();
        };
        QTRY_VERIFY_WITH_TIMEOUT(isBack(), 60000);
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestScreens>(argc, argv);
}
#include "test_screens.moc"

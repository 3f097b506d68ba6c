#include "heard.h"

#include "core/cablelength.h"
#include "core/cardevents.h"
#include "core/pages.h"
#include "core/runningtime.h"
#include "core/toolscycle.h"

#include <QTest>

using namespace Qt::StringLiterals;
using enum UnitEvent;
using Events = std::vector<UnitEvent>;

namespace {

PendingEvents waiting(const Events &events)
{
    PendingEvents pending;
    for (const UnitEvent event : events)
        pending.add(event);
    return pending;
}

// Every value that touches step through, from `start` until one comes again.
template <typename Value> QList<int> steps(Value start, Value (*next)(Value))
{
    QList<int> values = {start};
    Value value = next(start);
    for (; !values.contains(value); value = next(value))
        values << value;
    return values << value;
}

} // namespace

class TestCore : public HeardTest
{
    Q_OBJECT

private slots:
    void whatALaterEventMakesPointlessIsFolded()
    {
        const auto taken = [](const Events &events) {
            PendingEvents pending = waiting(events);
            Events order;
            while (!pending.isEmpty())
                order.push_back(pending.takeFirst());
            return order;
        };
        QVERIFY((taken({CardRemoved, CardInserted}) == Events{CardRemoved, CardInserted})); // swapped
        QVERIFY((taken({CardInserted, CardRemoved}) == Events{CardRemoved}));
        QVERIFY((taken({CardRemoved, CardInserted, CardRemoved, CardCorrupt, CardInserted}) ==
                 Events{CardRemoved, CardInserted}));
        QVERIFY((taken({CardCorrupt, CardCorrupt}) == Events{CardCorrupt}));
        QVERIFY((taken({UsbChanged, CardRemoved, UsbChanged}) == Events{CardRemoved, UsbChanged}));
        QVERIFY((taken({CardRemoved, Shutdown, CardInserted, Shutdown}) == Events{Shutdown}));
    }

    void theKernelsLastWordCounts()
    {
        QVERIFY(lastCardEvent(waiting({CardCorrupt, CardMounted}), eStateSDCardRemoved, eStateLive) ==
                CardRemoved); // the mount folds what waited
        QVERIFY(lastCardEvent(waiting({CardCorrupt, UsbChanged}), eStateSDCardRemoved, eStateLive) ==
                CardCorrupt);
        QVERIFY(lastCardEvent({}, eStateSDCardRemoved, eStateSDCardInserted) == CardRemoved);
        QVERIFY(lastCardEvent({}, eStateLive, eStateSDCardCorrupt) == CardCorrupt);
        QVERIFY(lastCardEvent({}, eStateLive, eStateToolsMenu) == std::nullopt);

        QVERIFY(cardNews(CardInserted, CardInserted, false, true).empty());
        QVERIFY((cardNews(CardInserted, CardInserted, true, true) == Events{CardRemoved, CardInserted}));
        QVERIFY(cardNews(CardInserted, CardInserted, true, false).empty()); // there was none to lose
        QVERIFY((cardNews(CardRemoved, CardInserted, true, true) == Events{CardRemoved}));
        QVERIFY(cardNews(std::nullopt, CardInserted, false, true).empty());

        QVERIFY(afterRemoval(CardHold::Taken, true) == CardHold::Gone);
        QVERIFY(afterRemoval(CardHold::Awaited, true) == CardHold::Awaited); // another one's mount
        QVERIFY(afterLook(CardHold::Gone, true) == CardHold::Gone);
        QVERIFY(afterLook(CardHold::Gone, false) == CardHold::Awaited);
    }

    void figuresAreShownAsTheUserReadsThem()
    {
        QCOMPARE(cableLengthText(1234, eMeter), u"12.34 m"_s);
        QCOMPARE(cableLengthText(1234, eFeet), u"40.49 ft"_s);
        QCOMPARE(cableLengthText(-50, eMeter), u"-0.50 m"_s); // in front of the zero point
        QCOMPARE(rawCountText(-98302), u"-98302 cnt"_s);
        QCOMPARE(burntInLength(-1, u"12.34 m"_s), u"-!-"_s);
        QVERIFY(!hasLeftDamageNote(91, 100) && hasLeftDamageNote(90, 100) && hasLeftDamageNote(110, 100));
        QCOMPARE(runningTimeText(3599999), u"00:59:59"_s);
        QCOMPARE(runningTimeText(3600000LL * 61), u"01:00:00"_s);
    }

    void aTouchStepsASettingAndComesRound()
    {
        QCOMPARE(steps(qint8(2), toolscycle::autoShutdownAfter), QList<int>({2, 1, 0, 3, 2}));
        QCOMPARE(steps(quint8(7), toolscycle::backlightAfter), QList<int>({7, 2, 3, 4, 5, 6, 7}));
        QCOMPARE(steps(
                     quint8(2), +[](quint8 at) { return toolscycle::languageAfter(at, 4); }),
                 QList<int>({2, 3, 0, 1, 2}));
        // What a settings file made up.
        QCOMPARE(int(toolscycle::autoShutdownAfter(-7)), 3);
        QCOMPARE(int(toolscycle::autoShutdownAfter(100)), 3);
        QCOMPARE(int(toolscycle::backlightAfter(0)), 2);
        QCOMPARE(int(toolscycle::languageAfter(200, 15)), 0);
        const auto [above, chosen, next] = toolscycle::delaysAround({0, 10, 20, 30}, 0);
        QCOMPARE(above + chosen + next, u"10 min0 min30 min"_s);
        QCOMPARE(toolscycle::delaysAround({0, 10, 20, 30}, -7).chosen, u"0 min"_s);
        QCOMPARE(int(toolscycle::headAfter(eNoImagerAttached, eMinimodule_10m).type), int(e60meter));
    }

    void theLastPageEndsWithTheLastFile()
    {
        for (const auto &[files, pages, onLast] : {std::array{0, 1, 0}, {12, 1, 12}, {13, 2, 1}}) {
            const auto [first, end] = filesOnPage(pages, files);
            QCOMPARE(pageCount(files), pages);
            QCOMPARE(end - first, onLast);
            QVERIFY(files == 0 || pageOf(files - 1) == pages);
        }
        QCOMPARE(stepWithin(2, +1, 1, 2), 2);
        QCOMPARE(stepWithin(1, -1, 1, 2), 1);
        QCOMPARE(stepWithin(0, +1, 0, 0), 0); // nothing there
    }
};

QTEST_GUILESS_MAIN(TestCore)
#include "test_core.moc"

#include "app/screen.h"

#include "dialogs/damagecatelog.h"

#include <QApplication>
#include <QListWidget>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr QPoint kCapture(40, 485);
constexpr QPoint kCatalog(110, 575);

void touchIn(const QWidget *dialog, const QString &button)
{
    QTest::mouseClick(dialog->findChild<QPushButton *>(button), Qt::LeftButton);
}

// A film is being recorded at 12.34 m.
class Recording : public Screen
{
public:
    void begin()
    {
        waitForCard();
        folder.control({u"meter"_s, u"12.34"_s});
        QTRY_COMPARE(text("lbl_CableLength"), u"12.34 m"_s);
        touch(40, 337);
        touch(kCapture.x(), kCapture.y());
        QTRY_COMPARE_WITH_TIMEOUT(text("lbl_VideoLengthIndicator"), u"00:00:01"_s, 20000);
    }

    // Opens the catalog; `act` works on the open dialog. Returns when it is closed.
    template <typename Act> void openCatalog(Act act)
    {
        QTimer::singleShot(0, &window, [this, act] {
            auto *catalog = qobject_cast<DamageCatelog *>(QApplication::activeModalWidget());
            if (!catalog)
                return;
            for (const char *name : {"btn_menu_LED_plus", "btn_menu_LED_minus", "btn_menu_zoom_plus",
                                     "btn_menu_zoom_minus", "btn_menu_Capture", "btn_menu_Thumbnails"})
                QVERIFY2(!button(name)->isEnabled(), name);
            act(catalog);
        });
        touch(kCatalog.x(), kCatalog.y());
    }

    // Row -1: takes the note off.
    void pick(int row)
    {
        openCatalog([row](DamageCatelog *catalog) {
            catalog->findChild<QListWidget *>()->setCurrentRow(row);
            touchIn(catalog,
                    row < 0 ? u"btn_DamageCatelog_RemovedDamageNotation"_s : u"btn_DamageCatelog_Confirm"_s);
        });
    }

    QStringList damageLines() const
    {
        return QString::fromUtf8(folder.content(logFile(u".txt"_s))).split(u'\n').filter(u"[!]"_s);
    }

    // What the film shows: nothing when the overlay is silent.
    static QByteArray overlay()
    {
        gboolean silent = TRUE;
        gchar *text = nullptr;
        g_object_get(g_gst_Pipeline.damageCatelog, "silent", &silent, "text", &text, nullptr);
        const QByteArray shown = silent ? QByteArray() : QByteArray(text);
        g_free(text);
        return shown;
    }
};

} // namespace

class TestDamageCatelog : public QObject
{
    Q_OBJECT

private slots:
    void aFindingIsInTheFilmAndInTheLogs()
    {
        Recording screen;
        screen.folder.put(u"/home/root/tubix4_app/damagecatelog/damagecat_en.txt"_s,
                          "Blockage\nRoots <2 cm> & \"more\" \n");
        screen.begin();
        for (const QString &button : {u"btn_DamageCatelog_Confirm"_s, u"btn_DamageCatelog_Cancel"_s})
            screen.openCatalog([button](DamageCatelog *catalog) { touchIn(catalog, button); });
        QVERIFY(!params::getInstance()->getParams().bDamageCatelogAnnotationActive); // nothing was picked
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
        screen.pick(1);
        const QString entry = u"Roots <2 cm> & \"more\" "_s;
        QCOMPARE(screen.text("lbl_DamageCatelogText"), entry);
        QCOMPARE(Recording::overlay(), QByteArray("Roots &lt;2 cm&gt; &amp; &quot;more&quot; "));
        QCOMPARE(screen.events().filter(u"49,"_s), QStringList{u"49,"_s + entry.trimmed()});
        QCOMPARE(screen.damageLines().size(), 1);
        QVERIFY(screen.damageLines().constFirst().startsWith(u"012.34  "_s));
        QVERIFY(screen.damageLines().constFirst().endsWith(u"[!] "_s + entry.trimmed()));
        QVERIFY(screen.folder.content(screen.logFile(u".html"_s)).contains("<td>Roots &lt;2 cm> &amp; "));
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
        QVERIFY(screen.button("btn_menu_LED_minus")->isEnabled());
        QVERIFY(!screen.button("btn_menu_Thumbnails")->isEnabled());
        // The card stays ours while a film is written to it.
        QVERIFY(!params::getInstance()->getParams().MSDC_ModuleInstalled);

        // The note goes with the tenth centimetre, without a line in a log.
        screen.folder.control({u"meter"_s, u"12.43"_s});
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"12.43 m"_s);
        QCOMPARE(screen.text("lbl_DamageCatelogText"), entry);
        screen.folder.control({u"meter"_s, u"12.44"_s});
        QTRY_COMPARE(screen.text("lbl_DamageCatelogText"), QString());
        QCOMPARE(Recording::overlay(), QByteArray());
        QCOMPARE(screen.damageLines().size(), 1);

        screen.pick(0);
        QCOMPARE(screen.text("lbl_DamageCatelogText"), u"Blockage"_s);
        screen.pick(-1);
        QCOMPARE(screen.text("lbl_DamageCatelogText"), QString());
        QCOMPARE(Recording::overlay(), QByteArray());
        QCOMPARE(screen.damageLines().size(), 3);
        QVERIFY(screen.damageLines().constLast().startsWith(u"012.44  "_s));
        QCOMPARE(screen.events().filter(u"49,"_s).size(), 3);

        screen.touch(kCapture.x(), kCapture.y());
        QVERIFY(screen.button("btn_menu_Thumbnails")->isEnabled());
        QVERIFY(params::getInstance()->getParams().MSDC_ModuleInstalled);
    }

    void aFilmThatEndsTakesTheCatalogAlong_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<bool>("captures");
        QTest::newRow("card pulled") << u"remove"_s << false;
        QTest::newRow("card full") << u"full"_s << true;
    }
    void aFilmThatEndsTakesTheCatalogAlong()
    {
        QFETCH(const QString, card);
        QFETCH(const bool, captures);
        Recording screen;
        screen.begin();
        QString question;
        QTimer answer; // the question that tells of the card
        connect(&answer, &QTimer::timeout, [&] {
            if (QWidget *box = QApplication::activeModalWidget();
                box && !qobject_cast<DamageCatelog *>(box)) {
                question = QString::fromLatin1(box->metaObject()->className());
                touchIn(box, u"btn_Confirm"_s);
            }
        });
        answer.start(20);
        screen.openCatalog([&](DamageCatelog *catalog) {
            catalog->findChild<QListWidget *>()->setCurrentRow(0);
            screen.folder.control({u"card"_s, card});
        });
        QTRY_COMPARE_WITH_TIMEOUT(question, u"ConfirmationBox"_s, 20000);
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(!screen.button("btn_DamageCatelog")->isVisible());
        QCOMPARE(screen.button("btn_menu_Capture")->isEnabled(), captures);
        QCOMPARE(screen.button("btn_menu_Thumbnails")->isEnabled(), captures);
        QVERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
        QCOMPARE(params::getInstance()->getParams().MSDC_ModuleInstalled, captures);
        QCOMPARE(screen.text("lbl_DamageCatelogText"), QString());
        QCOMPARE(screen.events().filter(u"49,"_s), QStringList());
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestDamageCatelog>(argc, argv);
}

#include "test_damagecatelog.moc"

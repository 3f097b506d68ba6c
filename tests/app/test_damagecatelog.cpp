#include "app/screen.h"

#include "dialogs/confirmationbox.h"
#include "dialogs/damagecatelog.h"

#include <QListWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr QPoint kCapture(40, 485);
constexpr QPoint kCatalog(110, 575);

// A film is being recorded at 12.34 m.
class Recording : public Screen
{
public:
    void begin()
    {
        folder.control({u"meter"_s, u"12.34"_s});
        QTRY_COMPARE(text("lbl_CableLength"), u"12.34 m"_s);
        startFilm();
        waitForFilmAt("00:00:01");
    }

    // Opens the catalog; `act` works on the open dialog. Returns when it is closed.
    template <typename Act> void openCatalog(Act act)
    {
        whenOpen<DamageCatelog>([this, act](DamageCatelog *catalog) {
            for (const char *name : {"btn_menu_LED_plus", "btn_menu_LED_minus", "btn_menu_zoom_plus",
                                     "btn_menu_zoom_minus", "btn_menu_Capture", "btn_menu_Thumbnails"})
                QVERIFY2(!button(name)->isEnabled(), name);
            act(catalog);
        });
        touch(kCatalog);
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

    QStringList damageLines() const { return QString::fromUtf8(log()).split(u'\n').filter(u"[!]"_s); }

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

class TestDamageCatelog : public HeardTest
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
        QVERIFY(!Screen::settings().bDamageCatelogAnnotationActive); // nothing was picked
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
        screen.pick(1);
        const QString entry = u"Roots <2 cm> & \"more\" "_s;
        QCOMPARE(screen.text("lbl_DamageCatelogText"), entry);
        QCOMPARE(Recording::overlay(), QByteArray("Roots &lt;2 cm&gt; &amp; &quot;more&quot; "));
        QCOMPARE(screen.events().filter(u"49,"_s), QStringList{u"49,"_s + entry.trimmed()});
        QCOMPARE(screen.damageLines().size(), 1);
        QVERIFY(screen.damageLines().constFirst().startsWith(u"012.34  "_s));
        QVERIFY(screen.damageLines().constFirst().endsWith(u"[!] "_s + entry.trimmed()));
        QVERIFY(screen.log(".html").contains("<td>Roots &lt;2 cm> &amp; "));
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
        QVERIFY(screen.button("btn_menu_LED_minus")->isEnabled());
        QVERIFY(!screen.button("btn_menu_Thumbnails")->isEnabled());
        // The card stays ours while a film is written to it.
        QVERIFY(!Screen::settings().MSDC_ModuleInstalled);

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

        screen.touch(kCapture);
        QVERIFY(screen.button("btn_menu_Thumbnails")->isEnabled());
        QVERIFY(Screen::settings().MSDC_ModuleInstalled);
    }

    void aFilmThatEndsTakesTheCatalogAlong()
    {
        Recording screen;
        screen.begin();
        bool isTold = false;
        screen.openCatalog([&](DamageCatelog *catalog) {
            catalog->findChild<QListWidget *>()->setCurrentRow(0);
            whenOpen<ConfirmationBox>([&](QDialog *box) {
                isTold = true;
                touchIn(box, u"btn_Confirm"_s);
            });
            screen.folder.control({u"card"_s, u"full"_s});
        });
        QTRY_VERIFY_WITH_TIMEOUT(isTold, 20000);
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(!screen.button("btn_DamageCatelog")->isVisible());
        for (const char *name : {"btn_menu_Capture", "btn_menu_Thumbnails", "btn_menu_zoom_plus"})
            QVERIFY2(screen.button(name)->isEnabled(), name);
        QVERIFY(Screen::settings().MSDC_ModuleInstalled);
        QCOMPARE(screen.text("lbl_DamageCatelogText"), QString());
        QCOMPARE(screen.events().filter(u"49,"_s), QStringList());
        QVERIFY(Screen::pictureRuns());
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestDamageCatelog>(argc, argv);
}

#include "test_damagecatelog.moc"

#include "dialogs/owner.h"
#include "finger.h"
#include "testunit.h"

#include "dialogs/fileexplorer.h"
#include "storage/dcim.h"
#include "storage/inspectionfolder.h"
#include "storage/position.h"

#include <QDirIterator>
#include <QTextEdit>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

UnitPath below(const QString &name)
{
    return kBaseFolder / name;
}

} // namespace

// The dialog with a finger on it, on a card with two inspections; "Main Street" is the current one.
class Explorer
{
public:
    explicit Explorer(const QStringList &more = {})
    {
        for (const QString &name : QStringList{u"Other"_s} + more + QStringList{u"Main Street"_s})
            CreateDCIMStructure(below(name));
        dialog = std::make_unique<FileExplorer>(&owner);
        dialog->init(&owner);
        dialog->setData(g_SavedFSInfo.currRootDirectory);
        dialog->show();
    }

    // What lies on the screen, from top to bottom.
    QStringList rows() const
    {
        QStringList names;
        for (QModelIndex row = tree()->indexAt(QPoint(0, 0)); row.isValid(); row = tree()->indexBelow(row))
            names << row.data().toString();
        return names;
    }

    void touchFolder(const QString &name)
    {
        QTRY_VERIFY2(rows().contains(name), qPrintable(name));
        QModelIndex row = tree()->indexAt(QPoint(0, 0));
        while (row.data().toString() != name)
            row = tree()->indexBelow(row);
        tree()->scrollTo(row);
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, tree()->visualRect(row).center());
    }

    QPushButton *button(const QString &name) const
    {
        return dialog->findChild<QPushButton *>(u"btn_"_s + name);
    }
    void touch(const QString &name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    void touchAndType(const QString &name, const QString &text)
    {
        whenOpen([text](QDialog *keyboard) {
            auto *field = keyboard->findChild<QTextEdit *>(u"textEdit"_s);
            field->setPlainText(text);
            QTest::keyClick(field, Qt::Key_Return);
        });
        touch(name);
    }

    TestUnit folder{{kDcimFolder}};
    Owner owner;
    std::unique_ptr<FileExplorer> dialog;

private:
    QTreeView *tree() const { return dialog->findChild<QTreeView *>(u"tView_Folders"_s); }
};

class TestFileExplorer : public HeardTest
{
    Q_OBJECT

private slots:
    void onlyInspectionFoldersAreShownAndOnlyTheyChange()
    {
        Explorer explorer({u"Кирова 5"_s, u"東京 下水道"_s});
        QDir().mkpath(unit::path(kDcimFolder / u"101OTHER"_s));
        QTRY_COMPARE(explorer.rows(), (QStringList{u"100TUBIX"_s, u"Main Street"_s, u"Other"_s, u"Кирова 5"_s,
                                                   u"東京 下水道"_s, u"101OTHER"_s}));
        for (const auto &[name, changes] :
             {std::pair(u"100TUBIX"_s, false), {u"東京 下水道"_s, true}, {u"101OTHER"_s, false}}) {
            explorer.touchFolder(name);
            QCOMPARE(explorer.button(u"RenameFolder"_s)->isEnabled(), changes);
            QCOMPARE(explorer.button(u"DeleteFolder"_s)->isEnabled(), changes);
        }
    }

    void theChosenFolderIsAnInspection()
    {
        struct Row
        {
            QString touched, button;
            UnitPath chosen;
        };
        for (const auto &[touched, button, chosen] : {Row{u"Other"_s, u"Confirm"_s, below(u"Other"_s)},
                                                      {u"100TUBIX"_s, u"Confirm"_s, folderOfTheDay()},
                                                      {u"101OTHER"_s, u"Confirm"_s, folderOfTheDay()},
                                                      {{}, u"Confirm"_s, below(u"Main Street"_s)},
                                                      {u"Other"_s, u"Cancel"_s, below(u"Main Street"_s)}}) {
            Explorer explorer;
            QDir().mkpath(unit::path(kDcimFolder / u"101OTHER"_s));
            if (!touched.isEmpty())
                explorer.touchFolder(touched);
            explorer.touch(button);
            QVERIFY(!explorer.dialog->isVisible());
            QCOMPARE(explorer.dialog->returnableText, chosen);
            QVERIFY(exists(explorer.dialog->returnableText / u".html_assets"_s));
        }
    }

    void aNewFolderIsAnInspectionAtOnce()
    {
        Explorer explorer;
        explorer.touchAndType(u"NewFolder"_s, u" Bach Str. 5. "_s); // its ends are lost on a computer
        QVERIFY(exists(below(u"Bach Str. 5/Bach Str. 5.html"_s)));
        QTRY_VERIFY(explorer.rows().contains(u"Bach Str. 5"_s));
        // The new one is selected: a second one goes into it, and a cancel comes back to where it started.
        explorer.touchAndType(u"NewFolder"_s, u"House 3"_s);
        QVERIFY(exists(below(u"Bach Str. 5/House 3/.thumbs"_s)));
        explorer.touch(u"Cancel"_s);
        QCOMPARE(explorer.dialog->returnableText, below(u"Main Street"_s));
    }

    void aRenamedFolderKeepsItsLogs()
    {
        Explorer explorer;
        explorer.folder.put(below(u"Main Street/Main Street.txt"_s), "001.00  a line\n");
        const QByteArray page = explorer.folder.content(below(u"Main Street/Main Street.html"_s));
        explorer.touchFolder(u"Main Street"_s);
        explorer.touchAndType(u"RenameFolder"_s, u"50% München %1"_s);
        const UnitPath renamed = below(u"50% München %1"_s);
        QVERIFY(!exists(below(u"Main Street"_s)));
        QCOMPARE(explorer.folder.content(renamed / u"50% München %1.html"_s), page);
        QCOMPARE(explorer.folder.content(renamed / u"50% München %1.txt"_s), QByteArray("001.00  a line\n"));
        QVERIFY(!explorer.button(u"DeleteFolder"_s)->isEnabled());
        explorer.touch(u"Cancel"_s); // the current folder went along
        QCOMPARE(explorer.dialog->returnableText, renamed);
        QCOMPARE(g_SavedFSInfo.currRootDirectory, renamed);
    }

    void aNameThatCannotBeDoesNothing()
    {
        Explorer explorer;
        const auto tree = [] {
            QStringList entries;
            QDirIterator all(unit::path(kDcimFolder), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
            while (all.hasNext())
                entries << all.next();
            entries.sort();
            return entries;
        };
        const QStringList before = tree();
        for (const QString &name :
             {u"../Escaped"_s, u"a/b"_s, u".."_s, u"."_s, u"Nul"_s, u".hidden"_s, u"Main Street."_s, u"a:b"_s,
              QString(256, u'x'), QString(121, QChar(0x416)), u" "_s}) {
            explorer.touchFolder(u"100TUBIX"_s);
            explorer.touchAndType(u"NewFolder"_s, name);
            explorer.touchFolder(u"Other"_s);
            explorer.touchAndType(u"RenameFolder"_s, name);
            QVERIFY2(tree() == before, qPrintable(name));
        }
        QCOMPARE(g_SavedFSInfo.currRootDirectory, below(u"Main Street"_s));
    }

    void aFolderWhoseLogCannotMoveKeepsAllItsNames()
    {
        Explorer explorer;
        explorer.folder.put(below(u"Other/Other.txt"_s), "ours\n");
        explorer.folder.put(below(u"Other/New.txt"_s), "somebody's\n");
        QVERIFY(renameInspectionFolder(below(u"Other"_s), u"New"_s).isEmpty());
        QVERIFY(exists(below(u"Other/Other.html"_s)));
        QCOMPARE(explorer.folder.content(below(u"Other/Other.txt"_s)), QByteArray("ours\n"));
        QCOMPARE(explorer.folder.content(below(u"Other/New.txt"_s)), QByteArray("somebody's\n"));
    }

    void theDeletedCurrentFolderGivesWayToThatOfTheDay()
    {
        Explorer explorer;
        for (const bool confirmed : {false, true}) {
            explorer.touchFolder(u"Main Street"_s);
            whenOpen([&](QDialog *box) { touchIn(box, confirmed ? u"btn_Confirm"_s : u"btn_Cancel"_s); });
            explorer.touch(u"DeleteFolder"_s);
            QCOMPARE(exists(below(u"Main Street"_s)), !confirmed);
        }
        QTRY_VERIFY(!explorer.rows().contains(u"Main Street"_s));
        explorer.touch(u"Confirm"_s); // not the neighbour in the list
        QCOMPARE(explorer.dialog->returnableText, folderOfTheDay());
        QVERIFY(exists(folderOfTheDay()));
    }
};

QTEST_MAIN(TestFileExplorer)
#include "test_fileexplorer.moc"

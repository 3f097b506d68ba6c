#include "dialogs/damagecatelog.h"
#include "ui_damagecatelog.h"

#include "dialogs/confirmationbox.h"
#include "dialogs/keyboardwidget.h"
#include "settings/damagecatelogfile.h"
#include "settings/params.h"

#include <QLoggingCategory>
#include <QScroller>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.dialogs")

} // namespace

DamageCatelog::DamageCatelog(QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      ui(std::make_unique<Ui::DamageCatelog>())
{
    ui->setupUi(this);
    // A thumb pushes the list itself; the bar is narrow for a glove.
    QScroller::grabGesture(ui->listW_DamageCatelog->viewport(), QScroller::LeftMouseButtonGesture);
}

DamageCatelog::~DamageCatelog() = default;

void DamageCatelog::init()
{
    m_pParams = params::getInstance();
    closeWithCard(parentWidget());
    populateDamageCatelogListWidget();
}

void DamageCatelog::populateDamageCatelogListWidget()
{
    ui->listW_DamageCatelog->clear();
    ui->btn_DamageCatelog_DeleteItem->setEnabled(false); // clearing told of a change, but nothing is chosen
    QString error;
    const auto entries = damagecatelog::entries(m_pParams->getParams().damageCatelog_filename, &error);
    if (entries)
        ui->listW_DamageCatelog->addItems(*entries);
    else
        qCDebug(log) << error;
}

void DamageCatelog::on_listW_DamageCatelog_itemSelectionChanged()
{
    ui->btn_DamageCatelog_DeleteItem->setEnabled(true);
}

void DamageCatelog::answer(bool act, const QString &description)
{
    returnValue = act;
    returnDamageDescription = description;
    close();
}

void DamageCatelog::on_btn_DamageCatelog_Confirm_clicked()
{
    const QListWidgetItem *chosen = ui->listW_DamageCatelog->currentItem();
    answer(chosen, chosen ? chosen->text() : QString());
}

void DamageCatelog::on_btn_DamageCatelog_Cancel_clicked()
{
    answer(false, QString());
}

void DamageCatelog::on_btn_DamageCatelog_RemovedDamageNotation_clicked()
{
    answer(true, QString());
}

void DamageCatelog::on_btn_DamageCatelog_AddItem_clicked()
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    keyboardWidget keyboard(QString(), settings.keyboardMap_filename, false, this);
    keyboard.init(parentWidget());
    if (keyboard.exec() != QDialog::Accepted)
        return;
    damagecatelog::append(settings.damageCatelog_filename, keyboard.returnableText);
    populateDamageCatelogListWidget();
    ui->listW_DamageCatelog->scrollToBottom();
}

void DamageCatelog::on_btn_DamageCatelog_DeleteItem_clicked()
{
    ConfirmationBox box(QPixmap(QStringLiteral(":/MyGraphicResources/graphics/confirmation_trashcan.png")),
                        this);
    box.closeWithCard(parentWidget());
    box.exec();
    const QListWidgetItem *chosen = ui->listW_DamageCatelog->currentItem();
    if (box.returnStatus && chosen) {
        damagecatelog::removeFirst(m_pParams->getParams().damageCatelog_filename, chosen->text());
        populateDamageCatelogListWidget();
    }
    // Also after "no": an entry that stayed chosen could not be chosen again.
    ui->listW_DamageCatelog->setCurrentItem(nullptr);
    ui->btn_DamageCatelog_DeleteItem->setEnabled(false);
}

// The damage catalog in the live screen: what is picked goes to the screen, into the film and into the logs.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "dialogs/damagecatelog.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/eventlog.h"
#include "storage/sdcard.h"

void MainWindow::on_btn_DamageCatelog_clicked()
{
    const std::initializer_list<QWidget *> lightAndZoom = {ui->btn_menu_LED_plus, ui->btn_menu_LED_minus,
                                                           ui->btn_menu_zoom_plus, ui->btn_menu_zoom_minus};
    for (QWidget *button : lightAndZoom)
        button->setEnabled(false);
    ui->btn_menu_Capture->setEnabled(false);
    ui->btn_menu_Thumbnails->setEnabled(false); // the end of the film enables it again
    ActivateMSDC(false);

    DamageCatelog catalog(this);
    connect(this, &MainWindow::SDCardRemoved, &catalog, &DamageCatelog::abandon);
    catalog.init();
    catalog.exec();
    if (catalog.returnValue)
        noteDamage(catalog.returnDamageDescription);

    for (QWidget *button : lightAndZoom)
        button->setEnabled(true);
    // A host never gets the card while a film is written to it; the film's end offers it again.
    const bool records = g_MainState == eStateLiveSavingMovie;
    ui->btn_menu_Capture->setEnabled(records ||
                                     (SDCardInfo.inserted && g_MainState != eStateVideoInputPipelineFailure));
    if (!records)
        ActivateMSDC(true);
}

void MainWindow::noteDamage(const QString &description)
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    ui->lbl_DamageCatelogText->setText(description);
    const QByteArray overlay = description.toUtf8();
    gst_UpdateVideoDamageCatelog(overlay.constData(), int(overlay.size()));
    UpdateLogFiles(eDamageCatelogChange, static_cast<unsigned short>(settings.MeterCount), QString(),
                   description);
    settings.bDamageCatelogAnnotationActive = true;
    settings.currDamageCatelogMeterCount = settings.MeterCount;
    UpdateEventLog(eEventDamageCatelogChange, description);
}

// The film may end under the open dialog: the card is full or cannot be written.
void MainWindow::abandonCatalog()
{
    if (auto *catalog = findChild<DamageCatelog *>())
        catalog->abandon();
}

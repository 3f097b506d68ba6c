// The damage catalog in the live screen: what is picked goes to the screen, into the film and into the logs.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "dialogs/damagecatelog.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/eventlog.h"

void MainWindow::on_btn_DamageCatelog_clicked()
{
    m_shown.isCatalogOpen = true;
    showScreen();
    ActivateMSDC(false);

    DamageCatelog catalog(this);
    catalog.init();
    ask(catalog);
    if (catalog.returnValue)
        noteDamage(catalog.returnDamageDescription);

    m_shown.isCatalogOpen = false;
    showScreen();
    // A host never gets the card while a film is written to it; the film's end offers it again.
    if (m_film == Film::None)
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

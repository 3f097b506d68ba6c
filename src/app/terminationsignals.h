// SIGINT and SIGTERM as a Qt signal on the GUI thread, so that the program ends in order.
#pragma once

#include <QObject>

class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr); // one instance a process

signals:
    void received();
};

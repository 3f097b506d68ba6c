// A running time as the screen shows it.
#pragma once

#include <QString>

// "hh:mm:ss", each modulo 60.
QString runningTimeText(qint64 milliseconds);

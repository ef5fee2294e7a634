#include "TestMain.h"
#include <QApplication>
class T : public QObject { Q_OBJECT };
int main() { return 0; }
#include "tst_pinlistparser.moc"

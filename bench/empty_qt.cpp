// The measure that start-up is held against: a widget application that starts and ends.
#include <QApplication>
#include <QTimer>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QTimer::singleShot(0, &application, &QApplication::quit);
    return QApplication::exec();
}

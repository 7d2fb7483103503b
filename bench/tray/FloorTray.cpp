// SPDX-License-Identifier: Apache-2.0
// The least program with a tray icon: one picture, and a menu of two lines.
#include <QApplication>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QMenu menu;
    menu.addAction(QStringLiteral("Status"));
    menu.addAction(QStringLiteral("Quit"), &application, &QApplication::quit);
    QPixmap picture(22, 22);
    picture.fill(Qt::darkGreen);
    QSystemTrayIcon icon {QIcon(picture)};
    icon.setContextMenu(&menu);
    icon.show();
    return QApplication::exec();
}

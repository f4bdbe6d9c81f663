#include "PrivateDisplay.h"
#include "WindowFixture.h"

#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QSettings>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    const vrkview::PrivateDisplay display;
    const vrk::test::TempFolder settings; // the user's own are left alone
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(settings.path().string()));
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    vrkview::test::closeWindow();
    return result;
}

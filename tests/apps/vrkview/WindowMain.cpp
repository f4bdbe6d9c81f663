#include "WindowFixture.h"
#include "start/PrivateDisplay.h"

#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QSettings>

#include <algorithm>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    const double scale = std::max(1.0, qEnvironmentVariable("QT_SCALE_FACTOR").toDouble());
    const vrkview::PrivateDisplay display(static_cast<int>(1280 * scale), static_cast<int>(1024 * scale));
    const vrk::test::TempFolder settings; // the user's own are left alone
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(settings.path().string()));
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    vrkview::test::closeWindow();
    return result;
}

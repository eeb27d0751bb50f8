// The programs of dialog and grid tests need a widget application around every test; this
// main is theirs, not part of the support library.

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Test discovery runs the program without the test environment.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

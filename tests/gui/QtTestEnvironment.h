#pragma once

#include <QApplication>
#include <gtest/gtest.h>

// One QApplication for the whole run of a GUI test, on the offscreen platform unless told otherwise.
class QtTestEnvironment : public ::testing::Environment {
public:
    explicit QtTestEnvironment(const char *programName) : m_name(programName) {}
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char *argv[] = {const_cast<char *>(m_name), nullptr};
        m_app = new QApplication(argc, argv);
    }
    void TearDown() override
    {
        delete m_app;
        m_app = nullptr;
    }

private:
    const char *m_name;
    QApplication *m_app = nullptr;
};

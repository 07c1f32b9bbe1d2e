#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

inline const QString program = QStringLiteral(REHEARSAL_PROGRAM);

struct Outcome
{
    int status;
    QByteArray out;
    QByteArray errors;
};

/// Runs a program in a folder, without a display and without any choice of a platform.
inline Outcome run(const QString &folder, const QStringList &arguments,
                   const QString &file = program, const QString &outFile = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_LOGGING_RULES"})
        environment.remove(QString::fromLatin1(name));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    if (!outFile.isEmpty())
        process.setStandardOutputFile(outFile);
    process.start(file, arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, process.errorString().toUtf8()};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

inline QByteArray setting(const char *key, const QByteArray &text)
{
    return QByteArray("<property key=\"") + key + "\">" + text + "</property>";
}

inline QByteArray effect(const char *type, const QByteArray &content)
{
    return QByteArray("<effect type=\"") + type + "\">" + content + "</effect>\n";
}

/// A child of a meta effect.
inline QByteArray child(const char *type, int eid, const QByteArray &properties)
{
    return effect(type, setting("name", "Child " + QByteArray::number(eid))
                            + setting("eid", QByteArray::number(eid)) + setting("gid", "10")
                            + properties);
}

inline QByteArray fixedStart(int ms)
{
    return setting("starttype", "0") + setting("startfixedtime", QByteArray::number(ms));
}

inline QByteArray fixedDuration(int ms)
{
    return setting("endtype", "0") + setting("endfixedtime", QByteArray::number(ms));
}

inline QByteArray times(int beginMs, int endMs)
{
    return setting("begin", QByteArray::number(beginMs))
           + setting("end", QByteArray::number(endMs));
}

/// Two lights, of which the group "Left one" (10) has the first, and these effects from line 7 on.
inline QByteArray show(const QByteArray &effects)
{
    return "<show version=\"1\">\n<map>\n"
           "<light uid=\"7\" name=\"Right\" x=\"1\" y=\"0.5\"/>\n"
           "<light uid=\"3\" name=\"Left\" x=\"0\" y=\"0.5\"/>\n"
           "<group uid=\"10\" name=\"Left one\" type=\"chasing\" lights=\"3\"/>\n"
           "</map>\n"
           + effects + "</show>\n";
}

/// The left light shows 0.25 from 0.5 s to 1.5 s, when the show is over.
inline QByteArray steadyShow()
{
    return show(effect("Meta Effect", setting("name", "Main")
                                          + child("Solid", 1,
                                                  setting("level", "0.25") + fixedStart(500)
                                                      + fixedDuration(1000) + times(500, 1500))));
}

/// A folder of its own for every test, and the program run in it.
class ProgramFolder
{
protected:
    QString path(const QString &file) const { return m_folder->filePath(file); }
    bool write(const QString &file, const QByteArray &text) const
    {
        QFile output(path(file));
        return output.open(QIODevice::WriteOnly) && output.write(text) == text.size();
    }
    QByteArray read(const QString &file) const
    {
        QFile input(path(file));
        return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
    }
    Outcome rehearsal(const QStringList &arguments) const
    {
        return run(m_folder->path(), arguments);
    }

    /// Every property of every effect; empty if the show cannot be inspected.
    QJsonArray inspected(const QString &file) const
    {
        return QJsonDocument::fromJson(rehearsal({"inspect", file, "--json"}).out).array();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// The command is done, and has no fault to tell.
#define VERIFY_DONE(command)                                                                       \
    do {                                                                                           \
        const Outcome done = command;                                                              \
        QVERIFY2(done.status == 0, done.errors.constData());                                       \
        QCOMPARE(done.errors, QByteArray());                                                       \
    } while (false)

/// The command failed and said one line, which has this in it.
#define VERIFY_FAILED(command, expectedStatus, part)                                               \
    do {                                                                                           \
        const Outcome failed = command;                                                            \
        QCOMPARE(failed.status, expectedStatus);                                                   \
        QCOMPARE(failed.out, QByteArray());                                                        \
        QVERIFY2(failed.errors.count('\n') == 1 && failed.errors.endsWith('\n')                    \
                     && failed.errors.contains(part),                                              \
                 failed.errors.constData());                                                       \
    } while (false)

#include "CommandLine.h"

#include "FrameTimes.h"
#include "OutputFile.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <vector>

namespace rehearsal {

namespace {

/// Why a call makes no sense.
struct UsageFault
{
    QString what;
};

using Request = decltype(CommandLine::request);

struct Command
{
    QString name; ///< empty: what the program does without a command
    QString operand;
    QString summary;
    QList<QCommandLineOption> options;
    Request (*read)(const QCommandLineParser &parser, const QString &operand);
};

// --- Options ---

QCommandLineOption option(const char *name, const char *description, const char *value = "")
{
    return {QString::fromLatin1(name), QString::fromLatin1(description),
            QString::fromLatin1(value)};
}

QCommandLineOption outOption(const char *description)
{
    return {{QStringLiteral("o"), QStringLiteral("output")},
            QString::fromLatin1(description),
            QStringLiteral("OUT")};
}

QList<QCommandLineOption> generalOptions()
{
    return {{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("show this help")},
            option("version", "show the program's version"),
            option("debug", "show the plug-in's debug lines on standard error"),
            option("plugin", "use this plug-in instead of the program's own", "FILE")};
}

/// The value of an option that was given; it must not be empty.
QString textValue(const QCommandLineParser &parser, const QString &name)
{
    QString text = parser.value(name);
    if (parser.isSet(name) && text.isEmpty())
        throw UsageFault{QStringLiteral("the value of --%1 is empty").arg(name)};
    return text;
}

double numberValue(const QCommandLineParser &parser, const QString &name, double lowest,
                   double highest)
{
    const QString text = textValue(parser, name);
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber || !(number >= lowest && number <= highest)) {
        throw UsageFault{
            QStringLiteral("--%1 must be a number from %2 to %3, not '%4'")
                .arg(name, QString::number(lowest), QString::number(highest, 'g', 10), text)};
    }
    return number;
}

QString outValue(const QCommandLineParser &parser)
{
    if (!parser.isSet(QStringLiteral("output")))
        throw UsageFault{QStringLiteral("-o OUT is missing")};
    return textValue(parser, QStringLiteral("output"));
}

// --- Commands ---

void checkOutputs(const RenderRequest &request)
{
    if (!request.tableFile.isEmpty() && !request.pictureFile.isEmpty()
        && placeOf(request.tableFile) == placeOf(request.pictureFile))
        throw UsageFault{QStringLiteral("--csv and --png name the same file")};
    for (const QString &output : {request.tableFile, request.pictureFile}) {
        if (!output.isEmpty() && placeOf(output) == placeOf(request.showFile))
            throw UsageFault{QStringLiteral("%1 would overwrite the show").arg(output)};
    }
}

Request readRender(const QCommandLineParser &parser, const QString &show)
{
    RenderRequest request;
    request.showFile = show;
    if (parser.isSet(QStringLiteral("fps"))) {
        request.fps = numberValue(parser, QStringLiteral("fps"), FrameTimes::lowestFps,
                                  FrameTimes::highestFps);
    }
    if (parser.isSet(QStringLiteral("seconds"))) {
        const double seconds = numberValue(parser, QStringLiteral("seconds"), 0, 4294967.295);
        // A frame is below the length just when it is below the next whole millisecond.
        request.lengthMs = static_cast<quint32>(std::ceil(seconds * 1000 - 1e-6));
    }
    request.tableFile = textValue(parser, QStringLiteral("csv"));
    request.pictureFile = textValue(parser, QStringLiteral("png"));
    checkOutputs(request);
    return request;
}

Request readInspect(const QCommandLineParser &parser, const QString &show)
{
    return InspectRequest{show, parser.isSet(QStringLiteral("json"))};
}

Request readResolve(const QCommandLineParser &parser, const QString &show)
{
    return ResolveRequest{show, outValue(parser)};
}

Request readImport(const QCommandLineParser &parser, const QString &sequence)
{
    const QString show = outValue(parser);
    if (placeOf(show) == placeOf(sequence))
        throw UsageFault{QStringLiteral("%1 would overwrite the sequence").arg(show)};
    return ImportRequest{
        sequence, show, {.linkAdjacent = parser.isSet(QStringLiteral("link-adjacent"))}};
}

Request readWindow(const QCommandLineParser &, const QString &show)
{
    return WindowRequest{show};
}

const std::vector<Command> &commands()
{
    static const std::vector<Command> all{
        {QString(),
         QStringLiteral("[SHOW]"),
         QStringLiteral("opens the window on a show, or on a new one; needs a display"),
         {},
         readWindow},
        {QStringLiteral("render"),
         QStringLiteral("SHOW"),
         QStringLiteral("plays a show in simulated time and writes what its lights show"),
         {option("fps", "frames a second; 40 if not given", "N"),
          option("seconds", "how long to play; one run of the longest effect if not given", "S"),
          option("csv", "write a table: a row a frame, a column a light", "F"),
          option("png", "write a picture: lights down, time across, brightness as grey", "F")},
         readRender},
        {QStringLiteral("inspect"),
         QStringLiteral("SHOW"),
         QStringLiteral("prints the tree of a show's effects"),
         {option("json", "as JSON, with every property")},
         readInspect},
        {QStringLiteral("resolve"),
         QStringLiteral("SHOW"),
         QStringLiteral("computes the times of all effects from their rules and saves the show"),
         {outOption("the file to save to")},
         readResolve},
        {QStringLiteral("import"),
         QStringLiteral("SEQ.xsq"),
         QStringLiteral("turns a sequence into a show"),
         {outOption("the show to write"),
          option("link-adjacent", "link an effect to the end of the one before where they touch")},
         readImport},
    };
    return all;
}

const Command *findCommand(const QString &name)
{
    const auto found =
        std::find_if(commands().begin() + 1, commands().end(),
                     [&name](const Command &command) { return command.name == name; });
    return found == commands().end() ? nullptr : &*found;
}

// --- Help ---

QString usage(const Command &command)
{
    QStringList words{QStringLiteral("rehearsal"), command.name, command.operand};
    words.removeAll(QString());
    for (const QCommandLineOption &option : command.options) {
        if (option.names().contains(QStringLiteral("output")))
            words.append(QStringLiteral("-o OUT"));
    }
    words.append(QStringLiteral("[options]"));
    return words.join(u' ');
}

QString optionLines(const QList<QCommandLineOption> &options)
{
    QString lines;
    for (const QCommandLineOption &option : options) {
        QStringList names;
        for (const QString &name : option.names())
            names.append((name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name);
        const QString spelling = names.join(QStringLiteral(", ")) + u' ' + option.valueName();
        lines += QStringLiteral("  %1%2\n").arg(spelling.leftJustified(22), option.description());
    }
    return lines;
}

QString helpText(const Command &command)
{
    QString text = QStringLiteral("Usage: %1\n").arg(usage(command));
    if (!command.name.isEmpty()) {
        QString summary = command.summary;
        summary[0] = summary[0].toUpper();
        return text + QStringLiteral("%1.\n\nOptions:\n").arg(summary)
               + optionLines(command.options + generalOptions());
    }
    text += QStringLiteral("       rehearsal COMMAND ...\n\nWithout a command: %1.\n\nCommands:\n")
                .arg(command.summary);
    for (const Command &other : commands()) {
        if (!other.name.isEmpty())
            text += QStringLiteral("  %1%2\n").arg(other.name.leftJustified(10), other.summary);
    }
    return text + QStringLiteral("\nOptions:\n") + optionLines(generalOptions())
           + QStringLiteral("\nrehearsal COMMAND --help tells more of a command.\n"
                            "Exit status: 0 done, 1 a file is at fault, 2 wrong usage.\n");
}

// --- The line as a whole ---

void parse(QCommandLineParser &parser, const QStringList &arguments)
{
    if (parser.parse(arguments))
        return;
    QString what = parser.errorText();
    if (what.endsWith(u'.'))
        what.chop(1);
    what[0] = what[0].toLower();
    throw UsageFault{what};
}

/// Takes the command's name off the arguments, if there is one. What stands before it are general
/// options.
const Command &takeCommand(QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions(generalOptions());
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parse(parser, arguments);
    const QStringList words = parser.positionalArguments();
    if (words.isEmpty())
        return commands().front();
    const QString &word = words.first();
    if (const Command *command = findCommand(word)) {
        arguments.removeAt(arguments.size() - words.size());
        return *command;
    }
    // A bare word that is no file was meant as a command.
    if (!word.isEmpty() && !word.contains(u'.') && !word.contains(u'/') && !QFileInfo::exists(word))
        throw UsageFault{QStringLiteral("there is no command '%1'").arg(word)};
    return commands().front();
}

QString onlyOperand(const QCommandLineParser &parser, const Command &command)
{
    const QStringList operands = parser.positionalArguments();
    const bool isOptional = command.operand.startsWith(u'[');
    if (operands.isEmpty() && isOptional)
        return {};
    if (operands.isEmpty() || operands.first().isEmpty()) {
        const QString name = isOptional ? command.operand.mid(1).chopped(1) : command.operand;
        throw UsageFault{QStringLiteral("%1 is missing").arg(name)};
    }
    if (operands.size() > 1)
        throw UsageFault{QStringLiteral("'%1' is one argument too many").arg(operands[1])};
    return operands.first();
}

CommandLine read(QStringList arguments, const Command **command)
{
    *command = &commands().front();
    *command = &takeCommand(arguments);
    QCommandLineParser parser;
    parser.addOptions((*command)->options + generalOptions());
    parse(parser, arguments);
    CommandLine line;
    if (parser.isSet(QStringLiteral("help"))) {
        line.request = TextRequest{helpText(**command)};
    } else if (parser.isSet(QStringLiteral("version"))) {
        line.request = TextRequest{QStringLiteral("rehearsal " REHEARSAL_VERSION "\n")};
    } else {
        line.showsDebugLines = parser.isSet(QStringLiteral("debug"));
        line.pluginFile = textValue(parser, QStringLiteral("plugin"));
        line.request = (*command)->read(parser, onlyOperand(parser, **command));
    }
    return line;
}

} // namespace

std::optional<CommandLine> parseCommandLine(const QStringList &arguments, QString *fault)
{
    const Command *command = nullptr;
    try {
        return read(arguments, &command);
    } catch (const UsageFault &usageFault) {
        *fault = QStringLiteral("rehearsal: %1 (usage: %2)").arg(usageFault.what, usage(*command));
        return {};
    }
}

} // namespace rehearsal

// ProgramArguments: parsed before there is a display, and again when Qt has taken its own options out.
#include "Varda/App/ProgramArguments.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

struct Grammar
{
    Grammar()
    {
        // Otherwise "-reverse", an option of Qt's, would be read as seven options of one letter, "-v" among them.
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        parser.setApplicationDescription(u"Test your own Android builds on a real phone."_s);
        parser.addOptions({help, version});
        parser.addPositionalArgument(u"file"_s, u"The .apk file to open."_s, u"[file]"_s);
    }

    const QCommandLineOption help{{u"h"_s, u"help"_s}, u"Print this help and exit."_s};
    const QCommandLineOption version{{u"v"_s, u"version"_s}, u"Print the version and exit."_s};
    QCommandLineParser parser;
};

} // namespace

std::optional<QString> ProgramArguments::infoText(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    Grammar grammar;
    grammar.parser.parse(QCoreApplication::arguments());
    if (grammar.parser.isSet(grammar.help))
        return grammar.parser.helpText();
    if (grammar.parser.isSet(grammar.version))
        return u"varda "_s + QStringLiteral(VARDA_VERSION) + u'\n';
    return std::nullopt;
}

std::optional<QString> ProgramArguments::parseError()
{
    Grammar grammar;
    if (!grammar.parser.parse(QCoreApplication::arguments()))
        return grammar.parser.errorText();
    const QStringList files = grammar.parser.positionalArguments();
    if (files.size() > 1)
        return u"Unexpected argument '%1'."_s.arg(files.at(1));
    return std::nullopt;
}

std::optional<QUrl> ProgramArguments::file()
{
    Grammar grammar;
    grammar.parser.parse(QCoreApplication::arguments());
    const QStringList files = grammar.parser.positionalArguments();
    if (files.isEmpty())
        return std::nullopt;
    const QString &path = files.first();
    // Not cleaned: behind a symbolic link, ".." leads elsewhere than the text suggests.
    return QUrl::fromLocalFile(path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path);
}

} // namespace varda

// ShellSyntax: one pass over the text, character by character.
#include "Shell/ShellSyntax.h"

#include <QRegularExpression>

#include <utility>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr auto uninterpreted = "|&<>()`$"; // unquoted, these would mean something that this shell does not do

class Parser
{
public:
    explicit Parser(const QString &text)
        : m_text(text)
    {
    }

    ShellScript parse()
    {
        while (m_position < m_text.size() && m_script.error.isEmpty())
            step(m_text.at(m_position++));
        endCommand();
        if (!m_script.error.isEmpty())
            m_script.commands.clear();
        return m_script;
    }

private:
    void step(QChar character)
    {
        if (character == u'\'')
            quoteSingle();
        else if (character == u'"')
            quoteDouble();
        else if (character == u'\\')
            escape();
        else if (character == u' ' || character == u'\t')
            endWord();
        else if (character == u';' || character == u'\n')
            endCommand();
        else if (QLatin1StringView(uninterpreted).contains(character))
            m_script.error = u"unexpected '%1'"_s.arg(character);
        else
            take(character, false);
    }

    void quoteSingle()
    {
        const qsizetype end = m_text.indexOf(u'\'', m_position);
        if (end < 0) {
            m_script.error = u"no closing quote"_s;
            return;
        }
        m_inWord = true;
        m_word += QStringView(m_text).mid(m_position, end - m_position);
        m_position = end + 1;
    }

    void quoteDouble()
    {
        m_inWord = true;
        while (m_position < m_text.size()) {
            QChar character = m_text.at(m_position++);
            if (character == u'"')
                return;
            if (character == u'$' || character == u'`') {
                m_script.error = u"unexpected '%1'"_s.arg(character);
                return;
            }
            if (character == u'\\' && m_position < m_text.size() && u"$`\"\\"_s.contains(m_text.at(m_position)))
                character = m_text.at(m_position++);
            m_word += character;
        }
        m_script.error = u"no closing quote"_s;
    }

    void escape()
    {
        if (m_position < m_text.size())
            take(m_text.at(m_position++), true);
        else
            take(u'\\', true);
    }

    void take(QChar character, bool quoted)
    {
        static const QRegularExpression name(u"^[A-Za-z_][A-Za-z0-9_]*$"_s);
        if (character == u'=' && !quoted && m_assigned < 0 && m_command.words.isEmpty() &&
            name.match(m_word).hasMatch())
            m_assigned = m_word.size();
        m_inWord = true;
        m_word += character;
    }

    void endWord()
    {
        const QString word = std::exchange(m_word, {});
        const qsizetype assigned = std::exchange(m_assigned, -1);
        if (!std::exchange(m_inWord, false))
            return;
        if (assigned >= 0)
            m_command.assignments.insert(word.left(assigned), word.mid(assigned + 1));
        else
            m_command.words.append(word);
    }

    void endCommand()
    {
        endWord();
        const ShellCommand command = std::exchange(m_command, {});
        if (!command.words.isEmpty() || !command.assignments.isEmpty())
            m_script.commands.append(command);
    }

    const QString &m_text;
    qsizetype m_position = 0;
    QString m_word;
    bool m_inWord = false;
    qsizetype m_assigned = -1; // where the "=" of an assignment stands in the word
    ShellCommand m_command;
    ShellScript m_script;
};

} // namespace

ShellScript parseShell(const QString &text)
{
    return Parser(text).parse();
}

QByteArray unescaped(const QString &text)
{
    const QByteArray source = text.toUtf8();
    QByteArray result;
    for (qsizetype index = 0; index < source.size(); ++index) {
        const char next = index + 1 < source.size() ? source.at(index + 1) : '\0';
        if (source.at(index) != '\\' || next == '\0') {
            result += source.at(index);
            continue;
        }
        ++index;
        bool isHex = false;
        const auto value = source.mid(index + 1, 2).toUInt(&isHex, 16);
        if (next == 'n')
            result += '\n';
        else if (next == 'r')
            result += '\r';
        else if (next == 't')
            result += '\t';
        else if (next == 'x' && isHex) {
            result += static_cast<char>(value);
            index += 2;
        } else if (next == '\\')
            result += '\\';
        else
            result += QByteArray(1, '\\') + next;
    }
    return result;
}

} // namespace varda::phone

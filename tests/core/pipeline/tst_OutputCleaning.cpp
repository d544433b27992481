#include "pipeline/OutputCleaning.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using test::textOfUtf8Bytes;

Q_DECLARE_METATYPE(EditVerdict)

namespace QTest {
template <>
char* toString(const EditVerdict& verdict) {
    const char* kinds[] = {"accepted", "rejected", "alreadyClean"};
    return qstrdup(QStringLiteral("%1(%2)")
                       .arg(QLatin1String(kinds[int(verdict.kind)]), verdict.text)
                       .toUtf8()
                       .constData());
}
} // namespace QTest

class OutputCleaningTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanOutput_data();
    void cleanOutput();
    void isPrefaceLine_data();
    void isPrefaceLine();
    void lineBreakCount_data();
    void lineBreakCount();
    void normalizedLineEndings();
    void trimming_data();
    void trimming();
    void validateEdit_data();
    void validateEdit();
    void validateEditChecksInOrder_data();
    void validateEditChecksInOrder();
    void graphemesAfterComplexScripts_data();
    void graphemesAfterComplexScripts();
};

void OutputCleaningTest::cleanOutput_data() {
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("cleaned");

    QTest::newRow("preface with colon, any case")
        << "Here is the corrected text: This sentence has a typo."
        << "This sentence has a typo.";
    QTest::newRow("preface without colon, blank line")
        << "Here is the corrected text\n\nThis sentence has a typo."
        << "This sentence has a typo.";
    QTest::newRow("short first paragraph mentioning corrected text")
        << "Sure! I fixed the corrected text for you.\n\nThe body."
        << "The body.";
    QTest::newRow("fixed text in first paragraph") << "OK, fixed text below.\n\nBody"
                                                   << "Body";
    QTest::newRow("long first paragraph is kept")
        << QStringLiteral("corrected text ") + QString(106, QLatin1Char('x')) + "\n\nBody"
        << QStringLiteral("corrected text ") + QString(106, QLatin1Char('x')) + "\n\nBody";
    QTest::newRow("first paragraph of 120 characters is dropped")
        << QStringLiteral("corrected text ") + QString(105, QLatin1Char('x')) + "\n\nBody"
        << "Body";
    QTest::newRow("preface paragraph with empty tail stays") << "Sure, corrected text!\n\n   "
                                                             << "Sure, corrected text!";
    QTest::newRow("only one blank-line split is considered") << "Intro\n\nfixed text\n\nBody"
                                                             << "Intro\n\nfixed text\n\nBody";
    QTest::newRow("curly quotes") << "\u201CHello\u201D"
                                  << "Hello";
    QTest::newRow("mixed quotes are left") << "\"Hello\u201D"
                                           << "\"Hello\u201D";
    QTest::newRow("straight quotes with inner spaces") << "\"  Hello \""
                                                       << "Hello";
    QTest::newRow("one pair of quotes removed in each of two passes") << "\"\"\"Hi\"\"\""
                                                                      << "\"Hi\"";
    QTest::newRow("two quotes only") << "\"\""
                                     << "";
    QTest::newRow("single quote character") << "\""
                                            << "\"";
    QTest::newRow("quote carrying a combining mark is not a quote") << "\"\u0301Hi\""
                                                                    << "\"\u0301Hi\"";
    QTest::newRow("preface then quoted text") << "Corrected text: \"Hi there\""
                                              << "Hi there";
    QTest::newRow("quoted preface and text") << "\"Here's the corrected text: Hi\""
                                             << "Hi";
    QTest::newRow("only a preface") << "Here is the corrected text:"
                                    << "";
    QTest::newRow("preface repeated twice: one removed")
        << "Here is the corrected text: Here is the corrected text: Hi"
        << "Here is the corrected text: Hi";
    // The longest preface takes its own colon; the colon step then takes one
    // more. Trying the shorter form first would leave a colon behind.
    QTest::newRow("longest preface first, then one more colon") << "Here is the corrected text::x"
                                                                << "x";
    QTest::newRow("longest version preface first") << "here's the corrected version::x"
                                                   << "x";
    QTest::newRow("colon after a preface without colon") << "Here is the fixed text :  Hi"
                                                         << "Hi";
    QTest::newRow("preface must end at a character boundary") << "Corrected text:\u0301 Hi"
                                                              << "Corrected text:\u0301 Hi";
    QTest::newRow("white space only") << " \n\t\u00A0\u3000"
                                      << "";
    QTest::newRow("no change") << "Plain text."
                               << "Plain text.";
    QTest::newRow("CR LF blank line does not split") << "fixed text\r\n\r\nBody"
                                                     << "fixed text\r\n\r\nBody";
    // The LF of a CR LF pair is part of that pair's character.
    QTest::newRow("CR LF then LF is not a blank line") << "fixed text\r\n\nBody"
                                                       << "fixed text\r\n\nBody";
    QTest::newRow("CR LF then two LF splits") << "fixed text\r\n\n\nBody"
                                              << "Body";
    QTest::newRow("colon carrying a combining mark stays") << "Here is the fixed text :\u0301 Hi"
                                                           << ":\u0301 Hi";
    QTest::newRow("typographic apostrophe is no preface") << "Here\u2019s the corrected text: Hi"
                                                          << "Here\u2019s the corrected text: Hi";
    // Lower-casing the dotted capital I adds a unit; the preface is still
    // measured on the text itself.
    QTest::newRow("capitals and a dotted I after the preface")
        << "HERE IS THE CORRECTED TEXT: \u0130stanbul \U0001F468\u200D\U0001F469"
        << "\u0130stanbul \U0001F468\u200D\U0001F469";
}

void OutputCleaningTest::cleanOutput() {
    QFETCH(QString, reply);
    QFETCH(QString, cleaned);
    QCOMPARE(scrivel::cleanOutput(reply), cleaned);
}

void OutputCleaningTest::isPrefaceLine_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("preface");

    QTest::newRow("starts with a preface") << "I've corrected the text" << true;
    QTest::newRow("contains corrected text") << "Below is the Corrected Text." << true;
    QTest::newRow("contains fixed text") << "my fixed text" << true;
    QTest::newRow("plain sentence") << "The weather is nice." << false;
    QTest::newRow("120 characters")
        << QStringLiteral("fixed text") + QString(110, QLatin1Char('.')) << true;
    QTest::newRow("121 characters")
        << QStringLiteral("fixed text") + QString(111, QLatin1Char('.')) << false;
    // Characters, not UTF-16 units: 110 emoji take 220 units but count 110.
    QString emoji;
    for (int i = 0; i < 110; ++i)
        emoji += QStringLiteral("\U0001F600");
    QTest::newRow("emoji counted as characters") << QStringLiteral("fixed text") + emoji << true;
    // 55 letters each followed by CR LF are 110 characters, the pairs whole.
    const QString lines = QStringLiteral("\u0915\r\n").repeated(55);
    QTest::newRow("CR LF pairs counted once") << QStringLiteral("fixed text") + lines << true;
    QTest::newRow("CR LF pairs counted once, 121 characters")
        << QStringLiteral("fixed text!") + lines << false;
}

void OutputCleaningTest::isPrefaceLine() {
    QFETCH(QString, text);
    QFETCH(bool, preface);
    QCOMPARE(scrivel::isPrefaceLine(text), preface);
}

void OutputCleaningTest::lineBreakCount_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("count");

    QTest::newRow("none") << "abc" << 0;
    QTest::newRow("LF") << "a\nb" << 1;
    QTest::newRow("CR LF counts once") << "a\r\nb" << 1;
    QTest::newRow("LF CR counts twice") << "a\n\rb" << 2;
    QTest::newRow("lone CR") << "a\rb" << 1;
    QTest::newRow("vertical tab and form feed") << "a\u000Bb\u000Cc" << 2;
    QTest::newRow("NEL, LS, PS") << "a\u0085b\u2028c\u2029d" << 3;
    QTest::newRow("tab is not a line break") << "a\tb" << 0;
    QTest::newRow("mixed") << "\r\n\r\n\n\r" << 4;
    QTest::newRow("CR LF after a Malayalam digit counts once") << "\u0D69\r\nx" << 1;
    QTest::newRow("CR LF later in a Devanagari run counts once") << "\u0915 \r\n\r\n" << 2;
}

void OutputCleaningTest::lineBreakCount() {
    QFETCH(QString, text);
    QFETCH(int, count);
    QCOMPARE(scrivel::lineBreakCount(text), qsizetype(count));
}

void OutputCleaningTest::normalizedLineEndings() {
    QCOMPARE(scrivel::normalizedLineEndings(QStringLiteral("a\r\nb\rc\nd\r\r\n")),
             QStringLiteral("a\nb\nc\nd\n\n"));
}

void OutputCleaningTest::trimming_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("trimmed");

    QTest::newRow("ASCII") << " \t\r\n x y \n"
                           << "x y";
    QTest::newRow("no-break and ideographic spaces") << "\u00A0\u3000x\u2003\u202F"
                                                     << "x";
    QTest::newRow("line and paragraph separators") << "\u2028x\u2029\u0085"
                                                   << "x";
    QTest::newRow("zero-width space is not white space") << "\u200Bx\u200B"
                                                         << "\u200Bx\u200B";
    QTest::newRow("emoji at the ends are kept") << "\U0001F600 \U0001F600"
                                                << "\U0001F600 \U0001F600";
    QTest::newRow("empty") << ""
                           << "";
}

void OutputCleaningTest::trimming() {
    QFETCH(QString, text);
    QFETCH(QString, trimmed);
    QCOMPARE(trimmedWhitespaceAndNewlines(text), trimmed);
}

void OutputCleaningTest::validateEdit_data() {
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("input");
    QTest::addColumn<EditVerdict>("verdict");

    const QString hundred = textOfUtf8Bytes(100);
    const QString hundredAlt = QString(100, QLatin1Char('b'));

    QTest::newRow("accepted correction")
        << "This sentence has a typo."
        << "This sentense has a typo." << EditVerdict::accepted("This sentence has a typo.");
    QTest::newRow("only a preface is empty") << "Here is the corrected text:"
                                             << "Hello" << EditVerdict::rejected("empty");
    QTest::newRow("white space only is empty") << "  \n"
                                               << "Hello" << EditVerdict::rejected("empty");
    QTest::newRow("same text") << "Hello there."
                               << "Hello there." << EditVerdict::alreadyClean();
    QTest::newRow("same text after cleaning") << "\"Hello there.\""
                                              << "Hello there." << EditVerdict::alreadyClean();
    QTest::newRow("line endings differ only") << "a\nb"
                                              << "a\r\nb" << EditVerdict::alreadyClean();
    QTest::newRow("input ending in a line break") << "Hello there.\n"
                                                  << "Hello there.\n"
                                                  << EditVerdict::accepted("Hello there.");
    QTest::newRow("remaining preface")
        << "Here is the corrected text: Here is the corrected text: Hi"
        << "Here is the corrected text: Hi!" << EditVerdict::rejected("meta-prefix");
    QTest::newRow("135 bytes of 100 pass") << QString(135, QLatin1Char('b')) << hundred
                                           << EditVerdict::accepted(QString(135, QLatin1Char('b')));
    QTest::newRow("136 bytes of 100 fail")
        << QString(136, QLatin1Char('b')) << hundred << EditVerdict::rejected("length-delta");
    QTest::newRow("65 bytes of 100 pass") << QString(65, QLatin1Char('b')) << hundred
                                          << EditVerdict::accepted(QString(65, QLatin1Char('b')));
    QTest::newRow("64 bytes of 100 fail")
        << QString(64, QLatin1Char('b')) << hundred << EditVerdict::rejected("length-delta");
    // Bytes, not characters: 45 two-byte letters are 90 bytes against 100.
    QTest::newRow("multi-byte reply measured in UTF-8")
        << QString(45, QChar(0x00E9)) << hundred
        << EditVerdict::accepted(QString(45, QChar(0x00E9)));
    QTest::newRow("multi-byte reply too long in UTF-8")
        << QString(68, QChar(0x00E9)) << hundred << EditVerdict::rejected("length-delta");
    // 50 two-byte letters are 100 bytes but only 50 characters.
    const QString hundredBytesOfAccents = textOfUtf8Bytes(100, QStringLiteral("\u00E9"));
    QTest::newRow("multi-byte input measured in UTF-8")
        << QString(135, QLatin1Char('b')) << hundredBytesOfAccents
        << EditVerdict::accepted(QString(135, QLatin1Char('b')));
    QTest::newRow("multi-byte input, reply too short")
        << QString(64, QLatin1Char('b')) << hundredBytesOfAccents
        << EditVerdict::rejected("length-delta");
    QTest::newRow("empty input never fails on length")
        << "Something new"
        << "" << EditVerdict::accepted("Something new");
    QTest::newRow("one added line break passes")
        << hundredAlt.left(50) + "\n" + hundredAlt.left(49) << hundred
        << EditVerdict::accepted(hundredAlt.left(50) + "\n" + hundredAlt.left(49));
    QTest::newRow("two added line breaks fail")
        << hundredAlt.left(50) + "\n\n" + hundredAlt.left(48) << hundred
        << EditVerdict::rejected("line-breaks");
    QTest::newRow("CR LF in the reply counts once")
        << "ab\r\ncd\r\nef"
        << "ab\ncd\nex" << EditVerdict::accepted("ab\r\ncd\r\nef");
    QTest::newRow("two removed line breaks fail")
        << "ab cd ef gh"
        << "ab\ncd\nef gh" << EditVerdict::rejected("line-breaks");
}

void OutputCleaningTest::validateEdit() {
    QFETCH(QString, reply);
    QFETCH(QString, input);
    QFETCH(EditVerdict, verdict);
    QCOMPARE(scrivel::validateEdit(reply, input), verdict);
}

// Replies that break two rules at once: the verdict names the rule checked
// first (empty, unchanged, preface, length, line breaks).
void OutputCleaningTest::validateEditChecksInOrder_data() {
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("input");
    QTest::addColumn<EditVerdict>("verdict");

    QTest::newRow("empty before unchanged") << " "
                                            << "" << EditVerdict::rejected("empty");
    QTest::newRow("unchanged before preface")
        << "Here is the corrected text: Here is the corrected text: Hi"
        << "Here is the corrected text: Hi" << EditVerdict::alreadyClean();
    QTest::newRow("preface before length")
        << "Here is the corrected text: Here is the corrected text: " + QString(300, u'x')
        << "Hi there" << EditVerdict::rejected("meta-prefix");
    QTest::newRow("length before line breaks") << "a\n\n\nb"
                                               << "ab" << EditVerdict::rejected("length-delta");
}

void OutputCleaningTest::validateEditChecksInOrder() {
    QFETCH(QString, reply);
    QFETCH(QString, input);
    QFETCH(EditVerdict, verdict);
    QCOMPARE(scrivel::validateEdit(reply, input), verdict);
}

void OutputCleaningTest::graphemesAfterComplexScripts_data() {
    // Each sequence is one user-perceived character, wherever it stands.
    QTest::addColumn<QString>("letter");
    QTest::addColumn<QString>("sequence");
    const QList<std::pair<const char*, QString>> scripts = {
        {"Devanagari", QStringLiteral("\u0915\u093F")},
        {"Thai", QStringLiteral("\u0E01")},
        {"Malayalam", QStringLiteral("\u0D2E")},
        {"Khmer", QStringLiteral("\u1780")},
        {"Tibetan", QStringLiteral("\u0F40")},
        {"Myanmar", QStringLiteral("\u1000")},
        {"Latin", QStringLiteral("a")},
    };
    const QList<std::pair<const char*, QString>> sequences = {
        {"family", QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466")},
        {"flag", QStringLiteral("\U0001F1E9\U0001F1EA")},
        {"skin tone", QStringLiteral("\U0001F44D\U0001F3FD")},
        {"keycap", QStringLiteral("1\uFE0F\u20E3")},
        {"CR LF", QStringLiteral("\r\n")},
    };
    for (const auto& [script, letter] : scripts) {
        for (const auto& [name, sequence] : sequences)
            QTest::newRow(qPrintable(
                QStringLiteral("%1 after %2").arg(QLatin1String(name), QLatin1String(script))))
                << letter << sequence;
    }
}

void OutputCleaningTest::graphemesAfterComplexScripts() {
    QFETCH(QString, letter);
    QFETCH(QString, sequence);
    // The letter, a space, then the sequence three times.
    QCOMPARE(graphemeCount(letter + u' ' + sequence.repeated(3)), qsizetype(5));
    // A paragraph of 119 characters that opens with a preface is a preface
    // line: its length counts characters, not code units.
    const QString opening = QStringLiteral("here is the corrected text ") + letter + u' ';
    const QString paragraph = opening + sequence.repeated(119 - 29);
    QCOMPARE(graphemeCount(paragraph), qsizetype(119));
    QVERIFY(scrivel::isPrefaceLine(paragraph));
    QVERIFY(!scrivel::isPrefaceLine(paragraph + sequence.repeated(2)));
}

QTEST_GUILESS_MAIN(OutputCleaningTest)
#include "tst_OutputCleaning.moc"

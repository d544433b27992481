#include "core/pipeline/OutputCleaning.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::textOfUtf8Bytes;

Q_DECLARE_METATYPE(EditVerdict)

namespace QTest {
template <>
char* toString(const EditVerdict& verdict) {
    const char* kinds[] = {"accepted", "rejected", "alreadyClean"};
    return qstrdup(u"%1(%2)"_s.arg(QLatin1String(kinds[int(verdict.kind)]), verdict.text)
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
    void trimming_data();
    void trimming();
    void validateEdit_data();
    void validateEdit();
    void graphemesAfterComplexScripts_data();
    void graphemesAfterComplexScripts();
};

void OutputCleaningTest::cleanOutput_data() {
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("cleaned");

    const QString typo = u"This sentence has a typo."_s;
    QTest::newRow("preface with colon") << "Here is the corrected text: " + typo << typo;
    QTest::newRow("preface without colon, blank line")
        << "Here is the corrected text\n\n" + typo << typo;
    QTest::newRow("short first paragraph mentioning corrected text")
        << u"Sure! I fixed the corrected text for you.\n\nThe body."_s << u"The body."_s;
    const QString x105 = QString(105, u'x');
    QTest::newRow("first paragraph of 120 characters is dropped")
        << "corrected text " + x105 + "\n\nBody" << u"Body"_s;
    QTest::newRow("preface paragraph with empty tail stays")
        << u"Sure, corrected text!\n\n   "_s << u"Sure, corrected text!"_s;
    QTest::newRow("only one blank-line split is considered")
        << u"Intro\n\nfixed text\n\nBody"_s << u"Intro\n\nfixed text\n\nBody"_s;
    QTest::newRow("curly quotes") << u"\u201CHello\u201D"_s << u"Hello"_s;
    QTest::newRow("mixed quotes are left") << u"\"Hello\u201D"_s << u"\"Hello\u201D"_s;
    QTest::newRow("straight quotes with inner spaces") << u"\"  Hello \""_s << u"Hello"_s;
    QTest::newRow("one pair of quotes removed in each of two passes")
        << u"\"\"\"Hi\"\"\""_s << u"\"Hi\""_s;
    QTest::newRow("two quotes only") << u"\"\""_s << u""_s;
    QTest::newRow("single quote character") << u"\""_s << u"\""_s;
    QTest::newRow("quote carrying a combining mark is not a quote")
        << u"\"\u0301Hi\""_s << u"\"\u0301Hi\""_s;
    QTest::newRow("preface then quoted text") << u"Corrected text: \"Hi there\""_s << u"Hi there"_s;
    QTest::newRow("quoted preface and text") << u"\"Here's the corrected text: Hi\""_s << u"Hi"_s;
    QTest::newRow("only a preface") << u"Here is the corrected text:"_s << u""_s;
    QTest::newRow("preface repeated twice: one removed")
        << u"Here is the corrected text: Here is the corrected text: Hi"_s
        << u"Here is the corrected text: Hi"_s;
    // The longest preface takes its own colon; the colon step then takes one
    // more. Trying the shorter form first would leave a colon behind.
    QTest::newRow("longest preface first, then one more colon")
        << u"Here is the corrected text::x"_s << u"x"_s;
    QTest::newRow("longest version preface first")
        << u"here's the corrected version::x"_s << u"x"_s;
    QTest::newRow("colon after a preface without colon")
        << u"Here is the fixed text :  Hi"_s << u"Hi"_s;
    QTest::newRow("preface must end at a character boundary")
        << u"Corrected text:\u0301 Hi"_s << u"Corrected text:\u0301 Hi"_s;
    QTest::newRow("colon carrying a combining mark stays")
        << u"Here is the fixed text :\u0301 Hi"_s << u":\u0301 Hi"_s;
    QTest::newRow("white space only") << u" \n\t\u00A0\u3000"_s << u""_s;
    QTest::newRow("CR LF blank line does not split")
        << u"fixed text\r\n\r\nBody"_s << u"fixed text\r\n\r\nBody"_s;
    // The LF of a CR LF pair is part of that pair's character.
    QTest::newRow("CR LF then LF is not a blank line")
        << u"fixed text\r\n\nBody"_s << u"fixed text\r\n\nBody"_s;
    QTest::newRow("CR LF then two LF splits") << u"fixed text\r\n\n\nBody"_s << u"Body"_s;
    QTest::newRow("typographic apostrophe is no preface")
        << u"Here\u2019s the corrected text: Hi"_s << u"Here\u2019s the corrected text: Hi"_s;
    // Lower-casing the dotted capital I adds a unit; the preface is still
    // measured on the text itself.
    QTest::newRow("capitals and a dotted I after the preface")
        << u"HERE IS THE CORRECTED TEXT: \u0130stanbul \U0001F468\u200D\U0001F469"_s
        << u"\u0130stanbul \U0001F468\u200D\U0001F469"_s;
}

void OutputCleaningTest::cleanOutput() {
    QFETCH(QString, reply);
    QFETCH(QString, cleaned);
    QCOMPARE(scrivel::cleanOutput(reply), cleaned);
}

void OutputCleaningTest::isPrefaceLine_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("preface");

    QTest::newRow("starts with a preface") << u"I've corrected the text"_s << true;
    QTest::newRow("contains corrected text") << u"Below is the Corrected Text."_s << true;
    QTest::newRow("contains fixed text") << u"my fixed text"_s << true;
    QTest::newRow("plain sentence") << u"The weather is nice."_s << false;
    QTest::newRow("120 characters") << "fixed text" + QString(110, u'.') << true;
    QTest::newRow("121 characters") << "fixed text" + QString(111, u'.') << false;
    // Characters, not UTF-16 units: 110 emoji take 220 units but count 110.
    QTest::newRow("emoji counted as characters")
        << "fixed text" + u"\U0001F600"_s.repeated(110) << true;
    // 55 letters each followed by CR LF are 110 characters, the pairs whole.
    const QString lines = u"\u0915\r\n"_s.repeated(55);
    QTest::newRow("CR LF pairs counted once") << "fixed text" + lines << true;
    QTest::newRow("CR LF pairs counted once, 121 characters") << "fixed text!" + lines << false;
}

void OutputCleaningTest::isPrefaceLine() {
    QFETCH(QString, text);
    QFETCH(bool, preface);
    QCOMPARE(scrivel::isPrefaceLine(text), preface);
}

void OutputCleaningTest::lineBreakCount_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("count");

    QTest::newRow("none") << u"abc"_s << 0;
    QTest::newRow("CR LF counts once") << u"a\r\nb"_s << 1;
    QTest::newRow("LF CR counts twice") << u"a\n\rb"_s << 2;
    QTest::newRow("vertical tab and form feed") << u"a\u000Bb\u000Cc"_s << 2;
    QTest::newRow("NEL, LS, PS") << u"a\u0085b\u2028c\u2029d"_s << 3;
    QTest::newRow("tab is not a line break") << u"a\tb"_s << 0;
    QTest::newRow("mixed") << u"\r\n\r\n\n\r"_s << 4;
    QTest::newRow("CR LF after a Malayalam digit counts once") << u"\u0D69\r\nx"_s << 1;
    QTest::newRow("CR LF later in a Devanagari run counts once") << u"\u0915 \r\n\r\n"_s << 2;
}

void OutputCleaningTest::lineBreakCount() {
    QFETCH(QString, text);
    QFETCH(int, count);
    QCOMPARE(scrivel::lineBreakCount(text), qsizetype(count));
}

void OutputCleaningTest::trimming_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("trimmed");

    QTest::newRow("ASCII") << u" \t\r\n x y \n"_s << u"x y"_s;
    QTest::newRow("no-break and ideographic spaces") << u"\u00A0\u3000x\u2003\u202F"_s << u"x"_s;
    QTest::newRow("line and paragraph separators") << u"\u2028x\u2029\u0085"_s << u"x"_s;
    QTest::newRow("zero-width space is not white space")
        << u"\u200Bx\u200B"_s << u"\u200Bx\u200B"_s;
    QTest::newRow("emoji at the ends are kept")
        << u"\U0001F600 \U0001F600"_s << u"\U0001F600 \U0001F600"_s;
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
    using V = EditVerdict;

    const QString hundred = textOfUtf8Bytes(100);
    const auto b = [](qsizetype count) { return QString(count, u'b'); };
    const auto accented = [](qsizetype count) { return QString(count, u'\u00E9'); };

    QTest::newRow("accepted correction")
        << u"This sentence has a typo."_s << u"This sentense has a typo."_s
        << V::accepted(u"This sentence has a typo."_s);
    QTest::newRow("only a preface is empty")
        << u"Here is the corrected text:"_s << u"Hello"_s << V::rejected(u"empty"_s);
    QTest::newRow("same text after cleaning")
        << u"\"Hello there.\""_s << u"Hello there."_s << V::alreadyClean();
    QTest::newRow("CR LF and lone CR are line feeds")
        << u"a\nb\nc"_s << u"a\r\nb\rc"_s << V::alreadyClean();
    QTest::newRow("input ending in a line break")
        << u"Hello there.\n"_s << u"Hello there.\n"_s << V::accepted(u"Hello there."_s);
    QTest::newRow("remaining preface")
        << u"Here is the corrected text: Here is the corrected text: Hi"_s
        << u"Here is the corrected text: Hi!"_s << V::rejected(u"meta-prefix"_s);
    // The length may change by 35 % of the input's UTF-8 bytes.
    QTest::newRow("135 bytes of 100 pass") << b(135) << hundred << V::accepted(b(135));
    QTest::newRow("136 bytes of 100 fail") << b(136) << hundred << V::rejected(u"length-delta"_s);
    QTest::newRow("65 bytes of 100 pass") << b(65) << hundred << V::accepted(b(65));
    QTest::newRow("64 bytes of 100 fail") << b(64) << hundred << V::rejected(u"length-delta"_s);
    // 45 two-byte letters are 90 bytes; 68 are 136.
    QTest::newRow("multi-byte reply measured in UTF-8")
        << accented(45) << hundred << V::accepted(accented(45));
    QTest::newRow("multi-byte reply too long in UTF-8")
        << accented(68) << hundred << V::rejected(u"length-delta"_s);
    // 50 two-byte letters are 100 bytes but only 50 characters.
    const QString hundredBytesOfAccents = textOfUtf8Bytes(100, u"\u00E9"_s);
    QTest::newRow("multi-byte input measured in UTF-8")
        << b(135) << hundredBytesOfAccents << V::accepted(b(135));
    QTest::newRow("multi-byte input, reply too short")
        << b(64) << hundredBytesOfAccents << V::rejected(u"length-delta"_s);
    QTest::newRow("empty input never fails on length")
        << u"Something new"_s << u""_s << V::accepted(u"Something new"_s);
    const QString oneBreak = b(50) + "\n" + b(49);
    QTest::newRow("one added line break passes") << oneBreak << hundred << V::accepted(oneBreak);
    QTest::newRow("two added line breaks fail")
        << b(50) + "\n\n" + b(48) << hundred << V::rejected(u"line-breaks"_s);
    QTest::newRow("CR LF in the reply counts once")
        << u"ab\r\ncd\r\nef"_s << u"ab\ncd\nex"_s << V::accepted(u"ab\r\ncd\r\nef"_s);
    QTest::newRow("two removed line breaks fail")
        << u"ab cd ef gh"_s << u"ab\ncd\nef gh"_s << V::rejected(u"line-breaks"_s);

    // Replies that break two rules at once: the verdict names the rule checked
    // first (empty, unchanged, preface, length, line breaks).
    QTest::newRow("empty before unchanged") << u" "_s << u""_s << V::rejected(u"empty"_s);
    QTest::newRow("unchanged before preface")
        << u"Here is the corrected text: Here is the corrected text: Hi"_s
        << u"Here is the corrected text: Hi"_s << V::alreadyClean();
    QTest::newRow("preface before length")
        << "Here is the corrected text: Here is the corrected text: " + QString(300, u'x')
        << u"Hi there"_s << V::rejected(u"meta-prefix"_s);
    QTest::newRow("length before line breaks")
        << u"a\n\n\nb"_s << u"ab"_s << V::rejected(u"length-delta"_s);
}

void OutputCleaningTest::validateEdit() {
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
        {"Devanagari", u"\u0915\u093F"_s},
        {"Thai", u"\u0E01"_s},
        {"Malayalam", u"\u0D2E"_s},
        {"Khmer", u"\u1780"_s},
        {"Tibetan", u"\u0F40"_s},
        {"Myanmar", u"\u1000"_s},
        {"Latin", u"a"_s},
    };
    const QList<std::pair<const char*, QString>> sequences = {
        {"family", u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s},
        {"flag", u"\U0001F1E9\U0001F1EA"_s},
        {"skin tone", u"\U0001F44D\U0001F3FD"_s},
        {"keycap", u"1\uFE0F\u20E3"_s},
        {"CR LF", u"\r\n"_s},
    };
    for (const auto& [script, letter] : scripts) {
        for (const auto& [name, sequence] : sequences)
            QTest::addRow("%s after %s", name, script) << letter << sequence;
    }
}

void OutputCleaningTest::graphemesAfterComplexScripts() {
    QFETCH(QString, letter);
    QFETCH(QString, sequence);
    // The letter, a space, then the sequence three times.
    QCOMPARE(graphemeCount(letter + u' ' + sequence.repeated(3)), qsizetype(5));
    // A paragraph of 119 characters that opens with a preface is a preface
    // line: its length counts characters, not code units.
    const QString opening = "here is the corrected text " + letter + u' ';
    const QString paragraph = opening + sequence.repeated(119 - 29);
    QCOMPARE(graphemeCount(paragraph), qsizetype(119));
    QVERIFY(scrivel::isPrefaceLine(paragraph));
    QVERIFY(!scrivel::isPrefaceLine(paragraph + sequence.repeated(2)));
}

QTEST_GUILESS_MAIN(OutputCleaningTest)
#include "tst_OutputCleaning.moc"

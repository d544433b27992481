#include "presets/BuiltInPresets.h"
#include "presets/Preset.h"
#include "support/JsonWriter.h"
#include "support/TestSupport.h"

#include <QJsonDocument>
#include <QSet>
#include <QtTest>

using namespace scrivel;

namespace {

Preset samplePreset() {
    Preset preset;
    preset.id = QUuid::fromString(QStringLiteral("0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9"));
    preset.name = QStringLiteral("Local");
    preset.providerID = QStringLiteral("custom");
    preset.customBaseURL = QStringLiteral("http://localhost:11434/v1/");
    preset.model = QStringLiteral("llama3");
    preset.instructions = QStringLiteral("Fix \"this\".\nNow.");
    preset.reasoningEffort = QStringLiteral("low");
    preset.temperature = 0.7;
    preset.validatesEdits = true;
    return preset;
}

const char* minimalObject = R"({"id":"0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9","name":"N",)"
                            R"("providerID":"groq","model":"","instructions":"I",)"
                            R"("validatesEdits":false})";

} // namespace

class PresetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void encodesKeysInFieldOrder();
    void leavesAbsentOptionalsOut();
    void roundTripsThroughJson();
    void decoding_data();
    void decoding();
    void equalityComparesEveryField_data();
    void equalityComparesEveryField();
    void decodeListFailsWholeOnOneBadElement();
    void builtInsWithTheOnDeviceModel_data();
    void builtInsWithTheOnDeviceModel();
    void builtInsGetFreshIdentifiers();
};

void PresetTest::encodesKeysInFieldOrder() {
    const QByteArray expected =
        R"({"id":"0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9","name":"Local","providerID":"custom",)"
        R"("customBaseURL":"http:\/\/localhost:11434\/v1\/","model":"llama3",)"
        R"("instructions":"Fix \"this\".\nNow.","reasoningEffort":"low","temperature":0.7,)"
        R"("validatesEdits":true})";
    const QByteArray actual = JsonWriter::write(samplePreset().toJson());
    QVERIFY2(actual == expected, qPrintable(test::printable(actual)));
}

void PresetTest::leavesAbsentOptionalsOut() {
    Preset preset = samplePreset();
    preset.customBaseURL.reset();
    preset.reasoningEffort.reset();
    preset.temperature.reset();
    preset.validatesEdits = false;
    QCOMPARE(JsonWriter::write(preset.toJson()),
             QByteArray(R"({"id":"0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9","name":"Local",)"
                        R"("providerID":"custom","model":"llama3",)"
                        R"("instructions":"Fix \"this\".\nNow.","validatesEdits":false})"));
}

void PresetTest::roundTripsThroughJson() {
    QList<Preset> presets = builtInPresets(false);
    presets.append(samplePreset());
    const auto decoded = Preset::decodeList(*Preset::encodeList(presets));
    QVERIFY(decoded.has_value());
    QCOMPARE(*decoded, presets);
    QCOMPARE(Preset::encodeList({}), std::optional<QByteArray>("[]"));
}

void PresetTest::decoding_data() {
    QTest::addColumn<QString>("change"); // key=JSON value to set, or -key to remove
    QTest::addColumn<bool>("decodes");
    QTest::addColumn<QString>("problemKey");

    QTest::newRow("minimal") << "" << true << "";
    for (const char* key : {"id", "name", "providerID", "model", "instructions", "validatesEdits"})
        QTest::addRow("without %s", key)
            << QStringLiteral("-%1").arg(QLatin1String(key)) << false << QString::fromLatin1(key);
    QTest::newRow("temperature null") << "temperature=null" << true << "";
    QTest::newRow("customBaseURL null") << "customBaseURL=null" << true << "";
    QTest::newRow("reasoningEffort null") << "reasoningEffort=null" << true << "";
    QTest::newRow("integer temperature") << "temperature=1" << true << "";
    QTest::newRow("temperature as text") << "temperature=\"0.5\"" << false << "temperature";
    QTest::newRow("validatesEdits as number") << "validatesEdits=1" << false << "validatesEdits";
    QTest::newRow("validatesEdits null") << "validatesEdits=null" << false << "validatesEdits";
    QTest::newRow("name as number") << "name=3" << false << "name";
    QTest::newRow("model null") << "model=null" << false << "model";
    QTest::newRow("customBaseURL as bool") << "customBaseURL=true" << false << "customBaseURL";
    QTest::newRow("id not a UUID") << "id=\"not-a-uuid\"" << false << "id";
    QTest::newRow("id with braces")
        << "id=\"{0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9}\"" << false << "id";
    QTest::newRow("lower-case id") << "id=\"0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9\"" << true << "";
    QTest::newRow("unknown key ignored") << "color=\"blue\"" << true << "";
}

void PresetTest::decoding() {
    QFETCH(QString, change);
    QFETCH(bool, decodes);
    QFETCH(QString, problemKey);

    QJsonObject object = QJsonDocument::fromJson(minimalObject).object();
    if (change.startsWith(QLatin1Char('-'))) {
        object.remove(change.mid(1));
    } else if (!change.isEmpty()) {
        const qsizetype eq = change.indexOf(QLatin1Char('='));
        const QByteArray wrapped = "[" + change.mid(eq + 1).toUtf8() + "]";
        object.insert(change.left(eq), QJsonDocument::fromJson(wrapped).array().at(0));
    }
    const auto preset = Preset::fromJson(object);
    QCOMPARE(preset.has_value(), decodes);
    if (!decodes) {
        QCOMPARE(preset.error().key, problemKey);
        return;
    }
    QCOMPARE(preset->model, QString()); // not normalised
    QCOMPARE(Preset::idText(preset->id), QStringLiteral("0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9"));
}

void PresetTest::equalityComparesEveryField_data() {
    QTest::addColumn<Preset>("base");
    QTest::addColumn<Preset>("other");
    const Preset base = samplePreset();
    auto changed = [&](auto mutate) {
        Preset copy = base;
        mutate(copy);
        return copy;
    };
    QTest::newRow("id") << base << changed([](Preset& p) { p.id = QUuid::createUuid(); });
    QTest::newRow("name") << base << changed([](Preset& p) { p.name += QLatin1Char(' '); });
    QTest::newRow("providerID") << base << changed([](Preset& p) {
        p.providerID = QStringLiteral("groq");
    });
    QTest::newRow("customBaseURL absent")
        << base << changed([](Preset& p) { p.customBaseURL.reset(); });
    QTest::newRow("model") << base << changed([](Preset& p) { p.model.clear(); });
    QTest::newRow("instructions") << base << changed([](Preset& p) { p.instructions.chop(1); });
    QTest::newRow("reasoningEffort")
        << base << changed([](Preset& p) { p.reasoningEffort = QString(); });
    QTest::newRow("temperature value")
        << base << changed([](Preset& p) { p.temperature = 0.7000001; });
    QTest::newRow("validatesEdits") << base << changed([](Preset& p) { p.validatesEdits = false; });
    Preset zero = base, absent = base;
    zero.temperature = 0.0;
    absent.temperature.reset();
    QTest::newRow("temperature 0.0 versus absent") << zero << absent;
}

void PresetTest::equalityComparesEveryField() {
    QFETCH(Preset, base);
    QFETCH(Preset, other);
    QVERIFY(!(base == other));
    QVERIFY(base == base);
}

void PresetTest::decodeListFailsWholeOnOneBadElement() {
    const QByteArray good = *Preset::encodeList({samplePreset()});
    QVERIFY(Preset::decodeList(good).has_value());
    QByteArray bad = good;
    bad.replace("\"validatesEdits\":true", "\"validatesEdits\":\"yes\"");
    const QByteArray twoElements = "[" + good.mid(1, good.size() - 2) + "," + bad.mid(1);
    const auto decoded = Preset::decodeList(twoElements);
    QVERIFY(!decoded.has_value());
    QCOMPARE(decoded.error().problem, PresetDecodingError::Problem::wrongType);
    QCOMPARE(Preset::decodeList("not json").error().problem,
             PresetDecodingError::Problem::invalidJSON);
    QCOMPARE(Preset::decodeList("{}").error().problem, PresetDecodingError::Problem::notAnArray);
    QCOMPARE(Preset::decodeList("[3]").error().problem, PresetDecodingError::Problem::notAnObject);
}

void PresetTest::builtInsWithTheOnDeviceModel_data() {
    QTest::addColumn<bool>("onDevice");
    QTest::newRow("on-device model available") << true;
    QTest::newRow("no on-device model") << false;
}

void PresetTest::builtInsWithTheOnDeviceModel() {
    QFETCH(bool, onDevice);
    const QList<Preset> presets = builtInPresets(onDevice);
    QCOMPARE(presets.size(), 3);

    const Preset& fix = presets[0];
    QCOMPARE(fix.name, QStringLiteral("Fix"));
    QCOMPARE(fix.providerID, onDevice ? QStringLiteral("onDevice") : QStringLiteral("groq"));
    QCOMPARE(fix.model, onDevice ? QString() : QStringLiteral("openai/gpt-oss-120b"));
    QCOMPARE(fix.temperature, std::optional<double>(0.0));
    QVERIFY(fix.validatesEdits);
    QCOMPARE(fix.instructions.size(), 275);
    QVERIFY(fix.instructions.contains(QStringLiteral("such as \"Here is\" or \"Corrected\".")));

    const Preset& concise = presets[1];
    QCOMPARE(concise.name, QStringLiteral("Make Concise"));
    QCOMPARE(concise.providerID, QStringLiteral("groq"));
    QCOMPARE(concise.model, QStringLiteral("openai/gpt-oss-120b"));
    QCOMPARE(concise.temperature, std::optional<double>(0.0));
    QVERIFY(!concise.validatesEdits);
    QCOMPARE(concise.instructions.size(), 152);

    const Preset& prompt = presets[2];
    QCOMPARE(prompt.name, QStringLiteral("Improve Prompt"));
    QCOMPARE(prompt.providerID, QStringLiteral("groq"));
    QCOMPARE(prompt.temperature, std::optional<double>());
    QVERIFY(!prompt.validatesEdits);
    QCOMPARE(prompt.instructions.size(), 225);

    for (const Preset& preset : presets) {
        QVERIFY(!preset.customBaseURL.has_value());
        QVERIFY(!preset.reasoningEffort.has_value());
    }
}

void PresetTest::builtInsGetFreshIdentifiers() {
    const QList<Preset> first = builtInPresets(false);
    const QList<Preset> second = builtInPresets(false);
    QSet<QUuid> ids;
    for (const auto& list : {first, second})
        for (const Preset& preset : list)
            ids.insert(preset.id);
    QCOMPARE(ids.size(), 6);
    for (int i = 0; i < 3; ++i) {
        Preset same = second[i];
        same.id = first[i].id;
        QCOMPARE(same, first[i]);
    }
}

QTEST_GUILESS_MAIN(PresetTest)
#include "tst_Preset.moc"

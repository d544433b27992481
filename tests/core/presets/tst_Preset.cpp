#include "core/presets/BuiltInPresets.h"
#include "core/presets/Preset.h"
#include "core/support/JsonWriter.h"
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
    void roundTripsThroughJson();
    void decoding_data();
    void decoding();
    void decodeListFailsWholeOnOneBadElement();
    void builtInsWithTheOnDeviceModel_data();
    void builtInsWithTheOnDeviceModel();
    void displayName_data();
    void displayName();
};

void PresetTest::encodesKeysInFieldOrder() {
    Preset preset = samplePreset();
    QByteArray actual = JsonWriter::write(preset.toJson());
    QVERIFY2(actual == R"({"id":"0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9","name":"Local",)"
                       R"("providerID":"custom","customBaseURL":"http:\/\/localhost:11434\/v1\/",)"
                       R"("model":"llama3","instructions":"Fix \"this\".\nNow.",)"
                       R"("reasoningEffort":"low","temperature":0.7,"validatesEdits":true})",
             qPrintable(test::printable(actual)));
    // Absent optionals are left out.
    preset.customBaseURL.reset();
    preset.reasoningEffort.reset();
    preset.temperature.reset();
    preset.validatesEdits = false;
    actual = JsonWriter::write(preset.toJson());
    QVERIFY2(actual == R"({"id":"0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9","name":"Local",)"
                       R"("providerID":"custom","model":"llama3",)"
                       R"("instructions":"Fix \"this\".\nNow.","validatesEdits":false})",
             qPrintable(test::printable(actual)));
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
    QTest::newRow("integer temperature") << "temperature=1" << true << "";
    QTest::newRow("temperature as text") << "temperature=\"0.5\"" << false << "temperature";
    QTest::newRow("validatesEdits as number") << "validatesEdits=1" << false << "validatesEdits";
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
    const auto preset = [](const char* name, const char* providerID, const char* model,
                           const char* instructions, std::optional<double> temperature,
                           bool validatesEdits) {
        return Preset{{}, name,        providerID,    {}, model, instructions,
                      {}, temperature, validatesEdits};
    };
    const QList<Preset> expected = {
        preset("Fix", onDevice ? "onDevice" : "groq", onDevice ? "" : "openai/gpt-oss-120b",
               "You correct spelling, grammar, and punctuation only. Preserve meaning, tone, "
               "language, formatting, and line breaks. Do not add facts, labels, Markdown, or "
               "quotation marks around the result. Never write a preface such as \"Here is\" or "
               "\"Corrected\". Return only the revised text.",
               0.0, true),
        preset("Make Concise", "groq", "openai/gpt-oss-120b",
               "Rewrite the text to be as concise as possible while preserving every fact, the "
               "original language, and the author's tone. Return only the rewritten text.",
               0.0, false),
        preset("Improve Prompt", "groq", "openai/gpt-oss-120b",
               "Rewrite the text as a clear, well-structured prompt for an AI model. Keep the "
               "author's intent and constraints, state the task explicitly, specify the expected "
               "output format, and remove filler. Return only the improved prompt.",
               std::nullopt, false),
    };
    // Everything but the identifiers, which are fresh each time.
    QSet<QUuid> ids;
    const auto withoutIDs = [&](QList<Preset> presets) {
        for (Preset& preset : presets)
            ids.insert(std::exchange(preset.id, QUuid()));
        return presets;
    };
    QCOMPARE(withoutIDs(builtInPresets(onDevice)), expected);
    QCOMPARE(withoutIDs(builtInPresets(onDevice)), expected);
    QCOMPARE(ids.size(), 6);
}

void PresetTest::displayName_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("named") << "Mail"
                           << "Mail";
    QTest::newRow("spaces kept") << " Mail "
                                 << " Mail ";
    QTest::newRow("empty") << ""
                           << "Untitled Preset";
    QTest::newRow("blank") << " \t\n\u00A0"
                           << "Untitled Preset";
}

void PresetTest::displayName() {
    QFETCH(QString, name);
    QFETCH(QString, shown);
    Preset preset = samplePreset();
    preset.name = name;
    QCOMPARE(preset.displayName(), shown);
    QCOMPARE(preset.name, name);
}

QTEST_GUILESS_MAIN(PresetTest)
#include "tst_Preset.moc"

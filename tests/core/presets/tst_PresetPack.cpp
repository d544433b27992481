#include "presets/BuiltInPresets.h"
#include "presets/PresetPackDocument.h"
#include "presets/ShippedPacks.h"
#include "providers/ProviderCatalog.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;

Q_DECLARE_METATYPE(PresetPackError)
Q_DECLARE_METATYPE(std::optional<PresetPackError>)

namespace {

const QByteArray goodItem =
    R"({"name":"A","providerID":"groq","model":"m","instructions":"i","validatesEdits":false})";

QByteArray pack(const QByteArray& kind, const QByteArray& version, const QByteArray& items) {
    return R"({"kind":)" + kind + R"(,"formatVersion":)" + version + R"(,"presets":[)" + items +
           "]}";
}

} // namespace

class PresetPackTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void decodeAndValidate_data();
    void decodeAndValidate();
    void encodesByteExact();
    void roundTripsThroughTheEncoder();
    void makePresets();
    void messages();
    void shippedPacksLoadAndValidate();
    void shippedPackLookupRules();
    void fuzzRegressionInputs();
};

void PresetPackTest::decodeAndValidate_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<std::optional<PresetPackError>>("error");
    using E = std::optional<PresetPackError>;
    const QByteArray kind = R"("scrivel.preset-pack")";

    QTest::newRow("good") << pack(kind, "1", goodItem) << E();
    QTest::newRow("wrong kind beats version")
        << pack(R"("other")", "2", goodItem) << E(PresetPackError::wrongKind("other"));
    QTest::newRow("kind differs in case") << pack(R"("Scrivel.Preset-Pack")", "1", goodItem)
                                          << E(PresetPackError::wrongKind("Scrivel.Preset-Pack"));
    QTest::newRow("version beats emptiness")
        << pack(kind, "2", "") << E(PresetPackError::unsupportedFormatVersion(2));
    QTest::newRow("empty") << pack(kind, "1", "") << E(PresetPackError::emptyPack());
    QTest::newRow("blank name reported before blank provider")
        << pack(
               kind, "1",
               R"({"name":"  ","providerID":" ","model":"","instructions":"","validatesEdits":true})")
        << E(PresetPackError::invalidPreset("empty name"));
    QTest::newRow("blank provider")
        << pack(
               kind, "1",
               R"({"name":"N","providerID":"\n","model":"","instructions":"","validatesEdits":true})")
        << E(PresetPackError::invalidPreset("empty providerID"));
    QTest::newRow("third item blank")
        << pack(
               kind, "1",
               goodItem + "," + goodItem +
                   R"(,{"name":"","providerID":"g","model":"","instructions":"","validatesEdits":true})")
        << E(PresetPackError::invalidPreset("empty name"));
    QTest::newRow("item without validatesEdits")
        << pack(kind, "1", R"({"name":"N","providerID":"g","model":"","instructions":""})")
        << E(PresetPackError::invalidJSON());
    QTest::newRow("null temperature and unknown members")
        << pack(
               kind, "1",
               R"({"name":"N","providerID":"g","model":"","instructions":"","validatesEdits":true,"temperature":null,"color":1})")
        << E();
    QTest::newRow("temperature as text")
        << pack(
               kind, "1",
               R"({"name":"N","providerID":"g","model":"","instructions":"","validatesEdits":true,"temperature":"hot"})")
        << E(PresetPackError::invalidJSON());
    QTest::newRow("bad id")
        << pack(
               kind, "1",
               R"({"id":"x","name":"N","providerID":"g","model":"","instructions":"","validatesEdits":true})")
        << E(PresetPackError::invalidJSON());
    QTest::newRow("missing kind") << QByteArray(R"({"formatVersion":1,"presets":[]})")
                                  << E(PresetPackError::invalidJSON());
    QTest::newRow("fractional version")
        << pack(kind, "1.5", goodItem) << E(PresetPackError::invalidJSON());
    QTest::newRow("version as text")
        << pack(kind, R"("1")", goodItem) << E(PresetPackError::invalidJSON());
    QTest::newRow("version read exactly past double precision")
        << pack(kind, "9007199254740993", goodItem)
        << E(PresetPackError::unsupportedFormatVersion(9007199254740993));
    QTest::newRow("version beyond 64 bits")
        << pack(kind, "9223372036854775808", goodItem) << E(PresetPackError::invalidJSON());
    QTest::newRow("null name is fine")
        << QByteArray(R"({"kind":"scrivel.preset-pack","formatVersion":1,"name":null,"presets":[)" +
                      goodItem + "]}")
        << E();
    const QByteArray item =
        R"({"providerID":"g","model":"","instructions":"","validatesEdits":true,)";
    QTest::newRow("escaped pair of surrogates")
        << pack(kind, "1", item + R"("name":"\ud83d\ude00"})") << E();
    QTest::newRow("lone surrogate in a name")
        << pack(kind, "1", item + R"("name":"A\ud800"})") << E(PresetPackError::invalidJSON());
    QTest::newRow("lone surrogate in an ignored member")
        << pack(kind, "1", item + R"("name":"A","x":["\udc00"]})")
        << E(PresetPackError::invalidJSON());
    QTest::newRow("bytes that are not UTF-8")
        << pack(kind, "1", item + "\"name\":\"A\xff\"}") << E(PresetPackError::invalidJSON());
    QTest::newRow("not JSON") << QByteArray("hello") << E(PresetPackError::invalidJSON());
    QTest::newRow("array") << QByteArray("[]") << E(PresetPackError::invalidJSON());
}

void PresetPackTest::decodeAndValidate() {
    QFETCH(QByteArray, bytes);
    QFETCH(std::optional<PresetPackError>, error);
    const auto decoded = PresetPackDocument::decode(bytes);
    std::optional<PresetPackError> actual;
    if (!decoded)
        actual = decoded.error();
    else if (const auto valid = decoded->validate(); !valid)
        actual = valid.error();
    QCOMPARE(actual, error);
}

void PresetPackTest::encodesByteExact() {
    Preset preset;
    preset.id = QUuid::fromString(QStringLiteral("0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9"));
    preset.name = QStringLiteral("Local");
    preset.providerID = QStringLiteral("custom");
    preset.customBaseURL = QStringLiteral("http://localhost:11434/v1");
    preset.model = QStringLiteral("llama3");
    preset.instructions = QStringLiteral("Fix.");
    preset.validatesEdits = true;
    const auto bytes = PresetPackDocument::fromPresets({preset}, QStringLiteral("Mine")).encode();
    const QByteArray expected = "{\n"
                                "  \"formatVersion\" : 1,\n"
                                "  \"kind\" : \"scrivel.preset-pack\",\n"
                                "  \"name\" : \"Mine\",\n"
                                "  \"presets\" : [\n"
                                "    {\n"
                                "      \"customBaseURL\" : \"http:\\/\\/localhost:11434\\/v1\",\n"
                                "      \"id\" : \"0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9\",\n"
                                "      \"instructions\" : \"Fix.\",\n"
                                "      \"model\" : \"llama3\",\n"
                                "      \"name\" : \"Local\",\n"
                                "      \"providerID\" : \"custom\",\n"
                                "      \"validatesEdits\" : true\n"
                                "    }\n"
                                "  ]\n"
                                "}";
    QVERIFY(bytes);
    QVERIFY2(*bytes == expected, qPrintable(test::printable(*bytes)));

    preset.temperature = std::numeric_limits<double>::infinity();
    QVERIFY(!PresetPackDocument::fromPresets({preset}).encode()); // JSON cannot hold it
}

void PresetPackTest::roundTripsThroughTheEncoder() {
    PresetPackDocument document =
        PresetPackDocument::fromPresets(builtInPresets(false), QStringLiteral("All"),
                                        QStringLiteral("Every built-in / one \"pack\""));
    document.presets[1].id.reset();
    const auto decoded = PresetPackDocument::decode(*document.encode());
    QVERIFY(decoded);
    QCOMPARE(*decoded, document);
    QCOMPARE(*decoded->encode(), *document.encode());
}

void PresetPackTest::makePresets() {
    const QUuid existing = QUuid::createUuid();
    const QUuid fresh = QUuid::createUuid();
    PresetPackDocument document;
    auto item = [](std::optional<QUuid> id, const QString& name) {
        PresetPackItem item;
        item.id = id;
        item.name = name;
        item.providerID = QStringLiteral("groq");
        item.instructions = QStringLiteral("  keep my spaces \n");
        return item;
    };
    document.presets = {item(existing, QStringLiteral("  Replaced\n")), item(fresh, "First"),
                        item(fresh, "Second"), item(std::nullopt, "No id")};

    const auto kept = document.makePresets(false, {existing});
    QCOMPARE(kept.replaced.size(), 2);
    QCOMPARE(kept.replaced[0].id, existing);
    QCOMPARE(kept.replaced[0].name, QStringLiteral("Replaced"));
    QCOMPARE(kept.replaced[0].instructions, QStringLiteral("  keep my spaces \n"));
    QCOMPARE(kept.replaced[1].name, QStringLiteral("Second")); // replaces the first
    QCOMPARE(kept.replaced[1].id, fresh);
    QCOMPARE(kept.added.size(), 2);
    QCOMPARE(kept.added[0].id, fresh);
    QVERIFY(!kept.added[1].id.isNull() && kept.added[1].id != existing);

    const auto copies = document.makePresets(true, {existing, fresh});
    QCOMPARE(copies.added.size(), 4);
    QVERIFY(copies.replaced.isEmpty());
    for (const Preset& preset : copies.added)
        QVERIFY(preset.id != existing && preset.id != fresh);
    QVERIFY(PresetPackDocument().makePresets(false, {}).added.isEmpty());
}

void PresetPackTest::messages() {
    QCOMPARE(PresetPackError::unsupportedFormatVersion(2).message(),
             QStringLiteral("This pack uses a format version Scrivel does not support yet."));
    QCOMPARE(PresetPackError::wrongKind("x").message(),
             QStringLiteral("This file is not a Scrivel preset pack."));
    QCOMPARE(PresetPackError::invalidPreset("empty providerID").message(),
             QStringLiteral("This pack has a preset that is missing a name or provider."));
    QCOMPARE(PresetPackError::invalidJSON().message(),
             QStringLiteral("This file is not a valid Scrivel preset pack."));
    QCOMPARE(PresetPackError::emptyPack().message(),
             QStringLiteral("This pack does not contain any presets."));
}

void PresetPackTest::shippedPacksLoadAndValidate() {
    // What ships is exactly what the source folder holds, byte for byte.
    const QDir folder(QStringLiteral(SCRIVEL_TEST_DATA_DIR "/../../resources/Packs"));
    const QStringList sources =
        folder.entryList({QStringLiteral("*.scrivel.json")}, QDir::Files, QDir::Name);
    const QStringList files = shippedPackURLs();
    QStringList shippedNames;
    for (const QString& file : files) {
        shippedNames << QFileInfo(file).fileName();
        QFile shipped(file), source(folder.filePath(QFileInfo(file).fileName()));
        QVERIFY(shipped.open(QIODevice::ReadOnly) && source.open(QIODevice::ReadOnly));
        QCOMPARE(shipped.readAll(), source.readAll());
    }
    QCOMPARE(shippedNames, sources);
    QVERIFY(!sources.isEmpty());

    const auto packs = shippedPacks();
    QCOMPARE(packs.size(), files.size()); // every shipped file loads and validates
    QStringList names;
    // Each preset earns its place: no name twice, none a built-in's.
    QSet<QString> presetNames;
    for (const Preset& builtIn : builtInPresets(false))
        presetNames.insert(builtIn.name.toLower());
    for (const auto& pack : packs) {
        names << *pack.name;
        QVERIFY(pack.description && !pack.description->isEmpty());
        for (const auto& item : pack.presets) {
            QVERIFY2(!presetNames.contains(item.name.toLower()), qPrintable(item.name));
            presetNames.insert(item.name.toLower());
            // Runnable as shipped: a catalogue provider and a model for it.
            QVERIFY2(catalogEndpoint(item.providerID), qPrintable(item.name));
            QVERIFY2(!item.model.isEmpty() && !item.customBaseURL, qPrintable(item.name));
            QVERIFY2(item.instructions.contains(QLatin1String("Return only")),
                     qPrintable(item.name));
        }
    }
    QStringList sorted = names;
    std::sort(sorted.begin(), sorted.end(), [](const QString& a, const QString& b) {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    });
    QCOMPARE(names, sorted);
}

void PresetPackTest::shippedPackLookupRules() {
    QTemporaryDir root;
    auto write = [&](const QString& relative, const QByteArray& bytes) {
        QDir(root.path()).mkpath(QFileInfo(relative).path());
        QFile file(root.filePath(relative));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    const QByteArray kind = R"("scrivel.preset-pack")";
    auto named = [&](const QByteArray& name) {
        return R"({"kind":"scrivel.preset-pack","formatVersion":1,"name":)" + name +
               R"(,"presets":[)" + goodItem + "]}";
    };
    // Only top-level files while Packs/ holds no JSON.
    write(QStringLiteral("Packs/readme.txt"), "x");
    write(QStringLiteral("top.scrivel.json"), named(R"("Top")"));
    QCOMPARE(shippedPacks(root.path()).size(), 1);

    write(QStringLiteral("Packs/b.scrivel.json"), named(R"("beta")"));
    write(QStringLiteral("Packs/a.scrivel.json"), named(R"("Beta")"));
    write(QStringLiteral("Packs/c.scrivel.json"), named(R"("alpha")"));
    write(QStringLiteral("Packs/d.scrivel.json"), named("null"));
    write(QStringLiteral("Packs/plain.json"), named(R"("Plain")"));
    write(QStringLiteral("Packs/upper.SCRIVEL.json"), named(R"("Upper")"));
    write(QStringLiteral("Packs/broken.scrivel.json"), pack(kind, "1", ""));
    const QStringList files = shippedPackURLs(root.path());
    QStringList fileNames;
    for (const QString& file : files)
        fileNames << QFileInfo(file).fileName();
    QCOMPARE(fileNames, QStringList({"a.scrivel.json", "b.scrivel.json", "broken.scrivel.json",
                                     "c.scrivel.json", "d.scrivel.json"}));
    QStringList names;
    for (const auto& document : shippedPacks(root.path()))
        names << document.name.value_or(QStringLiteral("<none>"));
    // Unnamed first, then case-insensitive with equal names in file order.
    QCOMPARE(names, QStringList({"<none>", "alpha", "Beta", "beta"}));
}

void PresetPackTest::fuzzRegressionInputs() {
    // Seeds and any input that once broke the fuzz target: a valid pack
    // must survive encoding and decoding unchanged.
    const QDir dir(QStringLiteral(SCRIVEL_TEST_DATA_DIR "/PresetPack"));
    const QFileInfoList inputs = dir.entryInfoList(QDir::Files);
    QVERIFY(!inputs.isEmpty());
    for (const QFileInfo& entry : inputs) {
        QFile file(entry.filePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto document = PresetPackDocument::decode(file.readAll());
        if (!document || !document->validate())
            continue;
        const auto encoded = document->encode();
        QVERIFY(encoded);
        QCOMPARE(*PresetPackDocument::decode(*encoded), *document);
    }
}

QTEST_GUILESS_MAIN(PresetPackTest)
#include "tst_PresetPack.moc"

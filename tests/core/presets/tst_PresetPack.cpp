#include "core/presets/BuiltInPresets.h"
#include "core/presets/PresetPackDocument.h"
#include "core/presets/ShippedPacks.h"
#include "core/providers/ProviderCatalog.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(PresetPackError)
Q_DECLARE_METATYPE(std::optional<PresetPackError>)

namespace {

const QByteArray goodItem =
    R"({"name":"A","providerID":"groq","model":"m","instructions":"i","validatesEdits":false})";

// An item with the given name and provider (JSON values) and more members.
QByteArray item(const QByteArray& name, const QByteArray& providerID = R"("g")",
                const QByteArray& more = "") {
    return R"({"name":)" + name + R"(,"providerID":)" + providerID +
           R"(,"model":"","instructions":"","validatesEdits":true)" + more + "}";
}

QByteArray pack(const QByteArray& items, const QByteArray& version = "1",
                const QByteArray& kind = R"("scrivel.preset-pack")") {
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
    void installedPacksComeFirst();
    void fuzzRegressionInputs();
};

void PresetPackTest::decodeAndValidate_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<std::optional<PresetPackError>>("error");
    using E = std::optional<PresetPackError>;
    const E invalidJSON = PresetPackError::invalidJSON();

    QTest::newRow("good") << pack(goodItem) << E();
    QTest::newRow("wrong kind beats version")
        << pack(goodItem, "2", R"("other")") << E(PresetPackError::wrongKind("other"));
    QTest::newRow("kind differs in case") << pack(goodItem, "1", R"("Scrivel.Preset-Pack")")
                                          << E(PresetPackError::wrongKind("Scrivel.Preset-Pack"));
    QTest::newRow("version beats emptiness")
        << pack("", "2") << E(PresetPackError::unsupportedFormatVersion(2));
    QTest::newRow("empty") << pack("") << E(PresetPackError::emptyPack());
    QTest::newRow("blank name reported before blank provider")
        << pack(item(R"("  ")", R"(" ")")) << E(PresetPackError::invalidPreset("empty name"));
    QTest::newRow("blank provider")
        << pack(item(R"("N")", R"("\n")")) << E(PresetPackError::invalidPreset("empty providerID"));
    QTest::newRow("third item blank") << pack(goodItem + "," + goodItem + "," + item(R"("")"))
                                      << E(PresetPackError::invalidPreset("empty name"));
    QTest::newRow("item without validatesEdits")
        << pack(R"({"name":"N","providerID":"g","model":"","instructions":""})") << invalidJSON;
    QTest::newRow("null temperature and unknown members")
        << pack(item(R"("N")", R"("g")", R"(,"temperature":null,"color":1)")) << E();
    QTest::newRow("temperature as text")
        << pack(item(R"("N")", R"("g")", R"(,"temperature":"hot")")) << invalidJSON;
    QTest::newRow("bad id") << pack(item(R"("N")", R"("g")", R"(,"id":"x")")) << invalidJSON;
    QTest::newRow("missing kind") << QByteArray(R"({"formatVersion":1,"presets":[]})")
                                  << invalidJSON;
    QTest::newRow("fractional version") << pack(goodItem, "1.5") << invalidJSON;
    QTest::newRow("version as text") << pack(goodItem, R"("1")") << invalidJSON;
    QTest::newRow("version read exactly past double precision")
        << pack(goodItem, "9007199254740993")
        << E(PresetPackError::unsupportedFormatVersion(9007199254740993));
    QTest::newRow("version beyond 64 bits") << pack(goodItem, "9223372036854775808") << invalidJSON;
    QTest::newRow("null name is fine")
        << QByteArray(R"({"kind":"scrivel.preset-pack","formatVersion":1,"name":null,"presets":[)" +
                      goodItem + "]}")
        << E();
    QTest::newRow("escaped pair of surrogates") << pack(item(R"("\ud83d\ude00")")) << E();
    QTest::newRow("lone surrogate in a name") << pack(item(R"("A\ud800")")) << invalidJSON;
    QTest::newRow("lone surrogate in an ignored member")
        << pack(item(R"("A")", R"("g")", R"(,"x":["\udc00"])")) << invalidJSON;
    QTest::newRow("bytes that are not UTF-8") << pack(item("\"A\xff\"")) << invalidJSON;
    QTest::newRow("not JSON") << QByteArray("hello") << invalidJSON;
    QTest::newRow("array") << QByteArray("[]") << invalidJSON;
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
    preset.id = QUuid::fromString(u"0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9"_s);
    preset.name = u"Local"_s;
    preset.providerID = u"custom"_s;
    preset.customBaseURL = u"http://localhost:11434/v1"_s;
    preset.model = u"llama3"_s;
    preset.instructions = u"Fix."_s;
    preset.validatesEdits = true;
    const auto bytes = PresetPackDocument::fromPresets({preset}, u"Mine"_s).encode();
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
    PresetPackDocument document = PresetPackDocument::fromPresets(
        builtInPresets(false), u"All"_s, u"Every built-in / one \"pack\""_s);
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
        item.providerID = u"groq"_s;
        item.instructions = u"  keep my spaces \n"_s;
        return item;
    };
    document.presets = {item(existing, u"  Replaced\n"_s), item(fresh, "First"),
                        item(fresh, "Second"), item(std::nullopt, "No id")};

    const auto kept = document.makePresets(false, {existing});
    QCOMPARE(kept.replaced.size(), 2);
    QCOMPARE(kept.replaced[0].id, existing);
    QCOMPARE(kept.replaced[0].name, u"Replaced"_s);
    QCOMPARE(kept.replaced[0].instructions, u"  keep my spaces \n"_s);
    QCOMPARE(kept.replaced[1].name, u"Second"_s); // replaces the first
    QCOMPARE(kept.replaced[1].id, fresh);
    QCOMPARE(kept.added.size(), 2);
    QCOMPARE(kept.added[0].id, fresh);
    QVERIFY(!kept.added[1].id.isNull() && kept.added[1].id != existing);

    const auto copies = document.makePresets(true, {existing, fresh});
    QCOMPARE(copies.added.size(), 4);
    QVERIFY(copies.replaced.isEmpty());
    for (const Preset& preset : copies.added)
        QVERIFY(preset.id != existing && preset.id != fresh);
}

void PresetPackTest::messages() {
    QCOMPARE(PresetPackError::unsupportedFormatVersion(2).message(),
             u"This pack uses a format version Scrivel does not support yet."_s);
    QCOMPARE(PresetPackError::wrongKind("x").message(),
             u"This file is not a Scrivel preset pack."_s);
    QCOMPARE(PresetPackError::invalidPreset("empty providerID").message(),
             u"This pack has a preset that is missing a name or provider."_s);
    QCOMPARE(PresetPackError::invalidJSON().message(),
             u"This file is not a valid Scrivel preset pack."_s);
    QCOMPARE(PresetPackError::emptyPack().message(), u"This pack does not contain any presets."_s);
}

void PresetPackTest::shippedPacksLoadAndValidate() {
    // What ships is exactly what the source folder holds, byte for byte.
    const QDir folder(QStringLiteral(SCRIVEL_TEST_DATA_DIR "/../../resources/Packs"));
    const QStringList sources = folder.entryList({u"*.scrivel.json"_s}, QDir::Files, QDir::Name);
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
    auto named = [&](const QByteArray& name) {
        return R"({"kind":"scrivel.preset-pack","formatVersion":1,"name":)" + name +
               R"(,"presets":[)" + goodItem + "]}";
    };
    // Only top-level files while Packs/ holds no JSON.
    write(u"Packs/readme.txt"_s, "x");
    write(u"top.scrivel.json"_s, named(R"("Top")"));
    QCOMPARE(shippedPacks(root.path()).size(), 1);

    write(u"Packs/b.scrivel.json"_s, named(R"("beta")"));
    write(u"Packs/a.scrivel.json"_s, named(R"("Beta")"));
    write(u"Packs/c.scrivel.json"_s, named(R"("alpha")"));
    write(u"Packs/d.scrivel.json"_s, named("null"));
    write(u"Packs/plain.json"_s, named(R"("Plain")"));
    write(u"Packs/upper.SCRIVEL.json"_s, named(R"("Upper")"));
    write(u"Packs/broken.scrivel.json"_s, pack(""));
    const QStringList files = shippedPackURLs(root.path());
    QStringList fileNames;
    for (const QString& file : files)
        fileNames << QFileInfo(file).fileName();
    QCOMPARE(fileNames, QStringList({"a.scrivel.json", "b.scrivel.json", "broken.scrivel.json",
                                     "c.scrivel.json", "d.scrivel.json"}));
    QStringList names;
    for (const auto& document : shippedPacks(root.path()))
        names << document.name.value_or(u"<none>"_s);
    // Unnamed first, then case-insensitive with equal names in file order.
    QCOMPARE(names, QStringList({"<none>", "alpha", "Beta", "beta"}));
}

void PresetPackTest::installedPacksComeFirst() {
    // Run from the build tree, only the compiled-in packs are found.
    QCOMPARE(shippedPackRoots(), QStringList{applicationResourceRoot()});

    // An installed packs folder holds its files directly; the compiled-in
    // root keeps them under Packs/.
    QTemporaryDir installed, builtIn;
    auto write = [](const QTemporaryDir& root, const QString& relative, const QByteArray& name) {
        QDir(root.path()).mkpath(QFileInfo(relative).path());
        QFile file(root.filePath(relative));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"kind":"scrivel.preset-pack","formatVersion":1,"name":")" + name +
                   R"(","presets":[)" + goodItem + "]}");
    };
    write(builtIn, u"Packs/shared.scrivel.json"_s, "Compiled Shared");
    write(builtIn, u"Packs/z.scrivel.json"_s, "Compiled Z");
    write(installed, u"shared.scrivel.json"_s, "Installed Shared");
    write(installed, u"added.scrivel.json"_s, "Installed Added");

    const QStringList files = shippedPackURLs(QStringList{installed.path(), builtIn.path()});
    QCOMPARE(files, QStringList({installed.filePath(u"added.scrivel.json"_s),
                                 installed.filePath(u"shared.scrivel.json"_s),
                                 builtIn.filePath(u"Packs/z.scrivel.json"_s)}));
    QStringList names;
    for (const auto& document : shippedPacks(QStringList{installed.path(), builtIn.path()}))
        names << *document.name;
    QCOMPARE(names, QStringList({"Compiled Z", "Installed Added", "Installed Shared"}));
    // A root that does not exist adds nothing.
    QCOMPARE(shippedPackURLs(QStringList{installed.filePath(u"none"_s), builtIn.path()}).size(), 2);
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

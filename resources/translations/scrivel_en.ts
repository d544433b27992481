<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>PresetLookup</name>
    <message numerus="yes">
        <source>%n presets are named &quot;%1&quot;; give the id of the one you mean:</source>
        <translation>
            <numerusform>%n preset is named &quot;%1&quot;; give the id of the one you mean:</numerusform>
            <numerusform>%n presets are named &quot;%1&quot;; give the id of the one you mean:</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n preset(s)</source>
        <translation>
            <numerusform>%n preset</numerusform>
            <numerusform>%n presets</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>scrivel::PresetEditorModel</name>
    <message numerus="yes">
        <source>%n other preset(s) use this key and will stop working: %1.</source>
        <translation>
            <numerusform>%n other preset uses this key and will stop working: %1.</numerusform>
            <numerusform>%n other presets use this key and will stop working: %1.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>scrivel::PresetPackPickerDialog</name>
    <message numerus="yes">
        <source>%n preset(s)</source>
        <translation>
            <numerusform>%n preset</numerusform>
            <numerusform>%n presets</numerusform>
        </translation>
    </message>
</context>
</TS>

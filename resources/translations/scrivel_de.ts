<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>BuiltInPresets</name>
    <message>
        <source>Fix</source>
        <translation>Korrigieren</translation>
    </message>
    <message>
        <source>Make Concise</source>
        <translation>Kürzen</translation>
    </message>
    <message>
        <source>Improve Prompt</source>
        <translation>Prompt verbessern</translation>
    </message>
</context>
<context>
    <name>CliApplication</name>
    <message>
        <source>rewrite FILE or standard input</source>
        <translation>FILE oder die Standardeingabe umschreiben</translation>
    </message>
    <message>
        <source>list the presets (* marks the active one)</source>
        <translation>Voreinstellungen auflisten (* markiert die aktive)</translation>
    </message>
    <message>
        <source>make a preset active</source>
        <translation>eine Voreinstellung aktivieren</translation>
    </message>
    <message>
        <source>change a preset&apos;s model or base URL</source>
        <translation>Modell oder Basis-URL einer Voreinstellung ändern</translation>
    </message>
    <message>
        <source>export presets as a pack</source>
        <translation>Voreinstellungen als Paket exportieren</translation>
    </message>
    <message>
        <source>import a pack</source>
        <translation>ein Paket importieren</translation>
    </message>
    <message>
        <source>list the packs that ship with Scrivel</source>
        <translation>die mit Scrivel gelieferten Pakete auflisten</translation>
    </message>
    <message>
        <source>add a shipped pack&apos;s presets as copies</source>
        <translation>Voreinstellungen eines mitgelieferten Pakets als Kopien hinzufügen</translation>
    </message>
    <message>
        <source>manage an API key (set reads it from stdin)</source>
        <translation>einen API-Schlüssel verwalten (set liest ihn von stdin)</translation>
    </message>
    <message>
        <source>list a provider&apos;s chat models</source>
        <translation>die Chat-Modelle eines Anbieters auflisten</translation>
    </message>
    <message>
        <source>the active preset&apos;s readiness</source>
        <translation>Bereitschaft der aktiven Voreinstellung</translation>
    </message>
    <message>
        <source>Usage: scrivel-cli &lt;command&gt; [options]</source>
        <translation>Aufruf: scrivel-cli &lt;Befehl&gt; [Optionen]</translation>
    </message>
    <message>
        <source>Rewrites text with the presets, keys and providers of Scrivel.</source>
        <translation>Schreibt Text mit den Voreinstellungen, Schlüsseln und Anbietern von Scrivel um.</translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation>Befehle:</translation>
    </message>
    <message>
        <source>Run &apos;scrivel-cli help &lt;command&gt;&apos; for a command&apos;s options.</source>
        <translation>„scrivel-cli help &lt;Befehl&gt;“ zeigt die Optionen eines Befehls.</translation>
    </message>
    <message>
        <source>Exit codes: 0 success, 1 other failure, 2 usage error, 3 preset not runnable,
4 provider failure, 130 cancelled.</source>
        <translation>Exit-Codes: 0 Erfolg, 1 anderer Fehler, 2 falscher Aufruf, 3 Voreinstellung nicht
ausführbar, 4 Fehler beim Anbieter, 130 abgebrochen.</translation>
    </message>
    <message>
        <source>Usage: %1</source>
        <translation>Aufruf: %1</translation>
    </message>
    <message>
        <source>Shows this help.</source>
        <translation>Zeigt diese Hilfe.</translation>
    </message>
    <message>
        <source>Name it with --base-url URL.</source>
        <translation>Geben Sie sie mit --base-url URL an.</translation>
    </message>
    <message>
        <source>Unknown provider &quot;%1&quot;. Providers: %2.</source>
        <translation>Unbekannter Anbieter „%1“. Anbieter: %2.</translation>
    </message>
    <message>
        <source>The base URL of a custom provider.</source>
        <translation>Die Basis-URL eines eigenen Anbieters.</translation>
    </message>
    <message>
        <source>The private key file “%1” is damaged and can’t be read. It was left as it is; move it aside to store keys in a new one.</source>
        <translation>Die private Schlüsseldatei „%1“ ist beschädigt und kann nicht gelesen werden. Sie wurde unverändert gelassen; verschieben Sie sie, um Schlüssel in einer neuen zu speichern.</translation>
    </message>
    <message>
        <source>Unknown command &quot;%1&quot;.</source>
        <translation>Unbekannter Befehl „%1“.</translation>
    </message>
    <message>
        <source>Rewrites FILE (or standard input) with a preset and writes the result to standard output. On a terminal the reply streams in on standard error.</source>
        <translation>Schreibt FILE (oder die Standardeingabe) mit einer Voreinstellung um und gibt das Ergebnis auf der Standardausgabe aus. Im Terminal erscheint die Antwort nach und nach auf der Standardfehlerausgabe.</translation>
    </message>
    <message>
        <source>The preset to use (default: the active one).</source>
        <translation>Die zu verwendende Voreinstellung (Standard: die aktive).</translation>
    </message>
    <message>
        <source>Also copy the result to the clipboard.</source>
        <translation>Das Ergebnis auch in die Zwischenablage kopieren.</translation>
    </message>
    <message>
        <source>rewrite takes at most one FILE.</source>
        <translation>rewrite nimmt höchstens eine Datei (FILE).</translation>
    </message>
    <message>
        <source>There are no presets.</source>
        <translation>Es gibt keine Voreinstellungen.</translation>
    </message>
    <message>
        <source>Type or paste text, then Ctrl+D</source>
        <translation>Text eingeben oder einfügen, dann Strg+D</translation>
    </message>
    <message>
        <source>Couldn’t read %1.</source>
        <translation>%1 konnte nicht gelesen werden.</translation>
    </message>
    <message>
        <source>standard input</source>
        <translation>Standardeingabe</translation>
    </message>
    <message>
        <source>Result:</source>
        <translation>Ergebnis:</translation>
    </message>
    <message>
        <source>The draft above was not used.</source>
        <translation>Der Entwurf oben wurde nicht übernommen.</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
    <message>
        <source>Couldn’t transform this text. Try again.</source>
        <translation>Dieser Text konnte nicht umgeschrieben werden. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>No change needed.</source>
        <translation>Keine Änderung nötig.</translation>
    </message>
    <message>
        <source>Copied.</source>
        <translation>Kopiert.</translation>
    </message>
    <message>
        <source>Not copied: there is no display to hold a clipboard (DISPLAY is not set).</source>
        <translation>Nicht kopiert: Es gibt keine Anzeige, die eine Zwischenablage halten könnte (DISPLAY ist nicht gesetzt).</translation>
    </message>
    <message>
        <source>Couldn’t copy the result. Select and copy it manually.</source>
        <translation>Das Ergebnis konnte nicht kopiert werden. Markieren und kopieren Sie es von Hand.</translation>
    </message>
    <message>
        <source>Lists and manages presets and packs.</source>
        <translation>Listet und verwaltet Voreinstellungen und Pakete.</translation>
    </message>
    <message>
        <source>export: replace FILE if it exists.</source>
        <translation>export: FILE ersetzen, falls vorhanden.</translation>
    </message>
    <message>
        <source>edit: the model to use.</source>
        <translation>edit: das zu verwendende Modell.</translation>
    </message>
    <message>
        <source>Active preset: %1</source>
        <translation>Aktive Voreinstellung: %1</translation>
    </message>
    <message>
        <source>Give a model, such as one that &apos;scrivel-cli models %1&apos; lists.</source>
        <translation>Geben Sie ein Modell an, etwa eines, das „scrivel-cli models %1“ auflistet.</translation>
    </message>
    <message>
        <source>Only presets of the custom provider have a base URL; &quot;%1&quot; uses %2.</source>
        <translation>Nur Voreinstellungen des eigenen Anbieters haben eine Basis-URL; „%1“ verwendet %2.</translation>
    </message>
    <message>
        <source>Updated %1.</source>
        <translation>%1 aktualisiert.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; names a preset. To export it, name the file too:
  scrivel-cli presets export %2 FILE
To export every preset into a file of that name, write ./%1 instead.</source>
        <translation>„%1“ ist der Name einer Voreinstellung. Um sie zu exportieren, nennen Sie auch die Datei:
  scrivel-cli presets export %2 FILE
Um alle Voreinstellungen in eine Datei dieses Namens zu exportieren, schreiben Sie stattdessen ./%1.</translation>
    </message>
    <message>
        <source>%1 already exists; nothing was written. Add --force to replace it.</source>
        <translation>%1 existiert bereits; es wurde nichts geschrieben. Mit --force wird die Datei ersetzt.</translation>
    </message>
    <message>
        <source>Exported to %1</source>
        <translation>Exportiert nach %1</translation>
    </message>
    <message>
        <source>Imported %1: %2 added, %3 replaced.</source>
        <translation>%1 importiert: %2 hinzugefügt, %3 ersetzt.</translation>
    </message>
    <message>
        <source>Untitled Pack</source>
        <translation>Unbenanntes Paket</translation>
    </message>
    <message>
        <source>Added %1 from %2.</source>
        <translation>%1 aus %2 hinzugefügt.</translation>
    </message>
    <message>
        <source>No shipped pack &quot;%1&quot;. See &apos;scrivel-cli presets packs&apos;.</source>
        <translation>Kein mitgeliefertes Paket „%1“. Siehe „scrivel-cli presets packs“.</translation>
    </message>
    <message>
        <source>Saves, deletes or checks the API key of a provider. &apos;key set&apos; reads the key from standard input (without echo on a terminal); keys are never printed. Providers: %1.</source>
        <translation>Speichert, löscht oder prüft den API-Schlüssel eines Anbieters. „key set“ liest den Schlüssel von der Standardeingabe (im Terminal ohne Echo); Schlüssel werden nie ausgegeben. Anbieter: %1.</translation>
    </message>
    <message>
        <source>API key for %1:</source>
        <translation>API-Schlüssel für %1:</translation>
    </message>
    <message>
        <source>No key given; nothing was saved.</source>
        <translation>Kein Schlüssel angegeben; es wurde nichts gespeichert.</translation>
    </message>
    <message>
        <source>Saved the key for %1.</source>
        <translation>Schlüssel für %1 gespeichert.</translation>
    </message>
    <message>
        <source>key stored</source>
        <translation>Schlüssel gespeichert</translation>
    </message>
    <message>
        <source>no key stored</source>
        <translation>kein Schlüssel gespeichert</translation>
    </message>
    <message>
        <source>No key stored for %1; nothing to delete.</source>
        <translation>Für %1 ist kein Schlüssel gespeichert; es gibt nichts zu löschen.</translation>
    </message>
    <message>
        <source>Deleted the key for %1.</source>
        <translation>Schlüssel für %1 gelöscht.</translation>
    </message>
    <message>
        <source>Unknown key action &quot;%1&quot;.</source>
        <translation>Unbekannte key-Aktion „%1“.</translation>
    </message>
    <message>
        <source>Lists a provider&apos;s chat models, sorted, using the stored key. Providers: %1.</source>
        <translation>Listet die Chat-Modelle eines Anbieters sortiert auf und verwendet dazu den gespeicherten Schlüssel. Anbieter: %1.</translation>
    </message>
    <message>
        <source>[options]</source>
        <translation>[Optionen]</translation>
    </message>
    <message>
        <source>Unknown %1 action &quot;%2&quot;.</source>
        <translation>Unbekannte %1-Aktion „%2“.</translation>
    </message>
    <message>
        <source>Shows whether the active preset can run. Exits with 3 when it cannot, and with 1 when its key could not be read from the key store.</source>
        <translation>Zeigt, ob die aktive Voreinstellung ausgeführt werden kann. Endet mit 3, wenn nicht, und mit 1, wenn ihr Schlüssel nicht aus dem Schlüsselspeicher gelesen werden konnte.</translation>
    </message>
</context>
<context>
    <name>FileDialogTransferUI</name>
    <message>
        <source>JSON files (*.json)</source>
        <translation>JSON-Dateien (*.json)</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importieren</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Import Presets</source>
        <translation>Voreinstellungen importieren</translation>
    </message>
    <message>
        <source>Export Presets</source>
        <translation>Voreinstellungen exportieren</translation>
    </message>
    <message>
        <source>Scrivel</source>
        <translation>Scrivel</translation>
    </message>
</context>
<context>
    <name>FixPanelView</name>
    <message>
        <source>Copied. Press Ctrl+V to replace your text.</source>
        <translation>Kopiert. Drücken Sie Strg+V, um Ihren Text zu ersetzen.</translation>
    </message>
    <message>
        <source>No change needed. Nothing was copied.</source>
        <translation>Keine Änderung nötig. Es wurde nichts kopiert.</translation>
    </message>
    <message>
        <source>Press %1 anywhere to open Scrivel.</source>
        <translation>Drücken Sie an beliebiger Stelle %1, um Scrivel zu öffnen.</translation>
    </message>
    <message>
        <source>Choose keys for Scrivel under Settings › Keyboard shortcut to open it from anywhere.</source>
        <translation>Wählen Sie unter Einstellungen › Tastenkürzel Tasten für Scrivel, um es von überall zu öffnen.</translation>
    </message>
    <message>
        <source>To open Scrivel from anywhere, bind “%1” to a shortcut in your desktop’s keyboard settings.</source>
        <translation>Um Scrivel von überall zu öffnen, legen Sie „%1“ in den Tastatureinstellungen Ihrer Arbeitsumgebung auf ein Tastenkürzel.</translation>
    </message>
</context>
<context>
    <name>GlobalShortcutStatus</name>
    <message>
        <source>Bind the command “%1” to a shortcut in your desktop’s keyboard settings.</source>
        <translation>Legen Sie den Befehl „%1“ in den Tastatureinstellungen Ihrer Arbeitsumgebung auf ein Tastenkürzel.</translation>
    </message>
    <message>
        <source>Asking the desktop for the shortcut…</source>
        <translation>Die Arbeitsumgebung wird nach dem Tastenkürzel gefragt …</translation>
    </message>
    <message>
        <source>No keys assigned yet: choose them with Change…</source>
        <translation>Noch keine Tasten zugewiesen: Wählen Sie sie mit „Ändern …“.</translation>
    </message>
    <message>
        <source>No keys assigned yet: choose them in your desktop’s settings.</source>
        <translation>Noch keine Tasten zugewiesen: Wählen Sie sie in den Einstellungen Ihrer Arbeitsumgebung.</translation>
    </message>
    <message>
        <source>This desktop offers apps no global shortcut.</source>
        <translation>Diese Arbeitsumgebung bietet Apps keine globalen Tastenkürzel.</translation>
    </message>
    <message>
        <source>The desktop declined Scrivel’s global shortcut.</source>
        <translation>Die Arbeitsumgebung hat das globale Tastenkürzel von Scrivel abgelehnt.</translation>
    </message>
    <message>
        <source>The desktop’s shortcut service did not answer.</source>
        <translation>Der Tastenkürzel-Dienst der Arbeitsumgebung hat nicht geantwortet.</translation>
    </message>
</context>
<context>
    <name>Hints</name>
    <message>
        <source>Check that Scrivel’s key file can be read and written; move a damaged one aside to start a new one.</source>
        <translation>Prüfen Sie, ob die Schlüsseldatei von Scrivel gelesen und geschrieben werden kann; verschieben Sie eine beschädigte, um eine neue anzulegen.</translation>
    </message>
    <message>
        <source>Check that a Secret Service (such as GNOME Keyring) is running and unlocked, or keep keys in a private file: SCRIVEL_SECRET_STORE=file scrivel-cli …</source>
        <translation>Prüfen Sie, ob ein Secret Service (etwa GNOME Keyring) läuft und entsperrt ist, oder bewahren Sie Schlüssel in einer privaten Datei auf: SCRIVEL_SECRET_STORE=file scrivel-cli …</translation>
    </message>
    <message>
        <source>Save a key with: %1</source>
        <translation>Schlüssel speichern mit: %1</translation>
    </message>
    <message>
        <source>Add presets with: scrivel-cli presets add-pack NAME (see &apos;scrivel-cli presets packs&apos;)</source>
        <translation>Voreinstellungen hinzufügen mit: scrivel-cli presets add-pack NAME (siehe „scrivel-cli presets packs“)</translation>
    </message>
    <message>
        <source>Set it with: %1</source>
        <translation>Festlegen mit: %1</translation>
    </message>
    <message>
        <source>List the models with: %1
Choose one with: %2</source>
        <translation>Modelle auflisten mit: %1
Eines auswählen mit: %2</translation>
    </message>
    <message>
        <source>Pick a preset that uses a provider: scrivel-cli presets use NAME</source>
        <translation>Wählen Sie eine Voreinstellung, die einen Anbieter verwendet: scrivel-cli presets use NAME</translation>
    </message>
    <message>
        <source>A custom provider needs a base URL, such as http://localhost:11434/v1.</source>
        <translation>Ein eigener Anbieter braucht eine Basis-URL, etwa http://localhost:11434/v1.</translation>
    </message>
    <message>
        <source>A base URL can’t hold a user name, password, query or fragment.</source>
        <translation>Eine Basis-URL darf keinen Benutzernamen, kein Passwort, keine Abfrage und kein Fragment enthalten.</translation>
    </message>
    <message>
        <source>Plain http is allowed only for servers on this computer (localhost or 127.0.0.1); use https for &quot;%1&quot;.</source>
        <translation>Unverschlüsseltes http ist nur für Server auf diesem Rechner erlaubt (localhost oder 127.0.0.1); verwenden Sie https für „%1“.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a valid provider base URL: use https://host/path, or http://localhost:PORT/path for a local server.</source>
        <translation>„%1“ ist keine gültige Basis-URL eines Anbieters: Verwenden Sie https://host/pfad oder für einen lokalen Server http://localhost:PORT/pfad.</translation>
    </message>
</context>
<context>
    <name>KeychainError</name>
    <message>
        <source>This API key contains a line break or another control character. Paste the key again without them.</source>
        <translation>Dieser API-Schlüssel enthält einen Zeilenumbruch oder ein anderes Steuerzeichen. Fügen Sie den Schlüssel ohne diese erneut ein.</translation>
    </message>
</context>
<context>
    <name>LaunchAtLoginError</name>
    <message>
        <source>its folder can’t be created</source>
        <translation>sein Ordner kann nicht angelegt werden</translation>
    </message>
    <message>
        <source>permission denied</source>
        <translation>Zugriff verweigert</translation>
    </message>
    <message>
        <source>the disk is full</source>
        <translation>der Datenträger ist voll</translation>
    </message>
    <message>
        <source>Couldn’t tell whether Scrivel starts at login. Try again later.</source>
        <translation>Es ließ sich nicht feststellen, ob Scrivel bei der Anmeldung startet. Versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>Couldn’t write the autostart entry %1.</source>
        <translation>Der Autostart-Eintrag %1 konnte nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Couldn’t write the autostart entry %1: %2.</source>
        <translation>Der Autostart-Eintrag %1 konnte nicht geschrieben werden: %2.</translation>
    </message>
    <message>
        <source>Couldn’t remove the autostart entry %1.</source>
        <translation>Der Autostart-Eintrag %1 konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>Couldn’t remove the autostart entry %1: %2.</source>
        <translation>Der Autostart-Eintrag %1 konnte nicht entfernt werden: %2.</translation>
    </message>
</context>
<context>
    <name>OnDeviceProvider</name>
    <message>
        <source>Text is too long</source>
        <translation>Der Text ist zu lang</translation>
    </message>
    <message>
        <source>Unsupported language</source>
        <translation>Sprache nicht unterstützt</translation>
    </message>
    <message>
        <source>Couldn’t fix this text</source>
        <translation>Dieser Text konnte nicht korrigiert werden</translation>
    </message>
    <message>
        <source>This device can’t run the on-device model</source>
        <translation>Dieses Gerät kann das lokale Modell nicht ausführen</translation>
    </message>
    <message>
        <source>The on-device model is turned off</source>
        <translation>Das lokale Modell ist ausgeschaltet</translation>
    </message>
    <message>
        <source>Model not ready</source>
        <translation>Modell nicht bereit</translation>
    </message>
</context>
<context>
    <name>OpenAICompatibleProvider</name>
    <message>
        <source>The provider stopped with an error. Try again.</source>
        <translation>Der Anbieter hat mit einem Fehler abgebrochen. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The reply was cut short by the provider’s length limit. Try a shorter text.</source>
        <translation>Die Antwort wurde von der Längenbegrenzung des Anbieters abgeschnitten. Versuchen Sie einen kürzeren Text.</translation>
    </message>
</context>
<context>
    <name>OperationUIState</name>
    <message>
        <source>The provider returned an unsafe edit. Try again.</source>
        <translation>Der Anbieter hat eine unsichere Änderung geliefert. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>No text to fix</source>
        <translation>Kein Text zum Korrigieren</translation>
    </message>
    <message>
        <source>Text is too long for this provider</source>
        <translation>Der Text ist zu lang für diesen Anbieter</translation>
    </message>
    <message>
        <source>Timed out. Try again.</source>
        <translation>Zeitüberschreitung. Versuchen Sie es erneut.</translation>
    </message>
</context>
<context>
    <name>Preset</name>
    <message>
        <source>Untitled Preset</source>
        <translation>Unbenannte Voreinstellung</translation>
    </message>
</context>
<context>
    <name>PresetConnectionState</name>
    <message>
        <source>The saved API key is unchanged.</source>
        <translation>Der gespeicherte API-Schlüssel ist unverändert.</translation>
    </message>
    <message>
        <source>Scrivel’s key file couldn’t be read in time. Try again.</source>
        <translation>Die Schlüsseldatei von Scrivel konnte nicht rechtzeitig gelesen werden. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The desktop’s keyring didn’t answer in time. Unlock it and try again.</source>
        <translation>Der Schlüsselbund der Arbeitsumgebung hat nicht rechtzeitig geantwortet. Entsperren Sie ihn und versuchen Sie es erneut.</translation>
    </message>
</context>
<context>
    <name>PresetLookup</name>
    <message>
        <source>No preset &quot;%1&quot;. See &apos;scrivel-cli presets&apos;.</source>
        <translation>Keine Voreinstellung „%1“. Siehe „scrivel-cli presets“.</translation>
    </message>
    <message numerus="yes">
        <source>%n presets are named &quot;%1&quot;; give the id of the one you mean:</source>
        <translation>
            <numerusform>%n Voreinstellung heißt „%1“; geben Sie die ID der gemeinten an:</numerusform>
            <numerusform>%n Voreinstellungen heißen „%1“; geben Sie die ID der gemeinten an:</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n preset(s)</source>
        <translation>
            <numerusform>%n Voreinstellung</numerusform>
            <numerusform>%n Voreinstellungen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>PresetPackError</name>
    <message>
        <source>This pack uses a format version Scrivel does not support yet.</source>
        <translation>Dieses Paket verwendet eine Formatversion, die Scrivel noch nicht unterstützt.</translation>
    </message>
    <message>
        <source>This file is not a Scrivel preset pack.</source>
        <translation>Diese Datei ist kein Scrivel-Voreinstellungspaket.</translation>
    </message>
    <message>
        <source>This pack has a preset that is missing a name or provider.</source>
        <translation>In diesem Paket fehlt einer Voreinstellung der Name oder der Anbieter.</translation>
    </message>
    <message>
        <source>This file is not a valid Scrivel preset pack.</source>
        <translation>Diese Datei ist kein gültiges Scrivel-Voreinstellungspaket.</translation>
    </message>
    <message>
        <source>This pack does not contain any presets.</source>
        <translation>Dieses Paket enthält keine Voreinstellungen.</translation>
    </message>
</context>
<context>
    <name>PresetStore</name>
    <message>
        <source>New Preset</source>
        <translation>Neue Voreinstellung</translation>
    </message>
</context>
<context>
    <name>PresetStoreProblem</name>
    <message>
        <source>Scrivel couldn’t read your presets. They were copied, unchanged, to %1.</source>
        <translation>Scrivel konnte Ihre Voreinstellungen nicht lesen. Sie wurden unverändert nach %1 kopiert.</translation>
    </message>
    <message>
        <source>Your stored presets are damaged; Scrivel kept the %1 it could read. The stored presets were copied, unchanged, to %2.</source>
        <translation>Ihre gespeicherten Voreinstellungen sind beschädigt; Scrivel hat die %1 lesbaren behalten. Die gespeicherten Voreinstellungen wurden unverändert nach %2 kopiert.</translation>
    </message>
    <message>
        <source>Scrivel could read only %1 of your %2 stored presets. The stored presets were copied, unchanged, to %3.</source>
        <translation>Scrivel konnte nur %1 von %2 gespeicherten Voreinstellungen lesen. Die gespeicherten Voreinstellungen wurden unverändert nach %3 kopiert.</translation>
    </message>
    <message>
        <source>Your presets hold settings from a newer version of Scrivel, which this version drops when it saves them. They were copied, unchanged, to %1.</source>
        <translation>Ihre Voreinstellungen enthalten Einstellungen einer neueren Scrivel-Version, die diese Version beim Speichern verwirft. Sie wurden unverändert nach %1 kopiert.</translation>
    </message>
    <message>
        <source>Scrivel can’t keep all of your stored presets and couldn’t copy them to %1, so changes to presets aren’t saved until it can.</source>
        <translation>Scrivel kann nicht alle gespeicherten Voreinstellungen behalten und konnte sie nicht nach %1 kopieren; Änderungen an Voreinstellungen werden deshalb erst gespeichert, wenn das möglich ist.</translation>
    </message>
    <message>
        <source>Presets couldn’t be read: copy in %1</source>
        <translation>Voreinstellungen nicht lesbar: Kopie in %1</translation>
    </message>
    <message>
        <source>Presets from a newer Scrivel: copy in %1</source>
        <translation>Voreinstellungen einer neueren Scrivel-Version: Kopie in %1</translation>
    </message>
    <message>
        <source>Presets couldn’t be copied: changes aren’t saved</source>
        <translation>Voreinstellungen nicht kopierbar: Änderungen werden nicht gespeichert</translation>
    </message>
</context>
<context>
    <name>PresetTestStatus</name>
    <message>
        <source>Test cancelled.</source>
        <translation>Test abgebrochen.</translation>
    </message>
    <message>
        <source>Couldn’t reach the provider.</source>
        <translation>Der Anbieter war nicht erreichbar.</translation>
    </message>
    <message>
        <source>Nothing to test.</source>
        <translation>Nichts zu testen.</translation>
    </message>
    <message>
        <source>Test input was too large.</source>
        <translation>Die Testeingabe war zu groß.</translation>
    </message>
    <message>
        <source>The provider timed out.</source>
        <translation>Zeitüberschreitung beim Anbieter.</translation>
    </message>
    <message>
        <source>Works</source>
        <translation>Funktioniert</translation>
    </message>
    <message>
        <source>Choose a model before testing.</source>
        <translation>Wählen Sie vor dem Test ein Modell.</translation>
    </message>
</context>
<context>
    <name>PresetTransfer</name>
    <message>
        <source>Couldn’t import presets</source>
        <translation>Voreinstellungen konnten nicht importiert werden</translation>
    </message>
    <message>
        <source>The pack could not be read. Check the file and try again.</source>
        <translation>Das Paket konnte nicht gelesen werden. Prüfen Sie die Datei und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Scrivel Presets</source>
        <translation>Scrivel-Voreinstellungen</translation>
    </message>
</context>
<context>
    <name>ProviderCatalog</name>
    <message>
        <source>Custom</source>
        <translation>Eigener</translation>
    </message>
    <message>
        <source>On Device</source>
        <translation>Lokal</translation>
    </message>
    <message>
        <source>Custom…</source>
        <translation>Eigener …</translation>
    </message>
</context>
<context>
    <name>ProviderConnectionFailure</name>
    <message>
        <source>%1 response was too large</source>
        <translation>Die Antwort von %1 war zu groß</translation>
    </message>
    <message>
        <source>The provider returned error %1.</source>
        <translation>Der Anbieter hat Fehler %1 gemeldet.</translation>
    </message>
    <message>
        <source>Enter a valid provider base URL.</source>
        <translation>Geben Sie eine gültige Basis-URL des Anbieters ein.</translation>
    </message>
    <message>
        <source>Enter an API key to connect.</source>
        <translation>Geben Sie zum Verbinden einen API-Schlüssel ein.</translation>
    </message>
    <message>
        <source>Couldn’t access the API key in Scrivel’s key file.</source>
        <translation>Auf den API-Schlüssel in der Schlüsseldatei von Scrivel konnte nicht zugegriffen werden.</translation>
    </message>
    <message>
        <source>Couldn’t access the API key in the desktop’s keyring.</source>
        <translation>Auf den API-Schlüssel im Schlüsselbund der Arbeitsumgebung konnte nicht zugegriffen werden.</translation>
    </message>
    <message>
        <source>The API key was rejected. Check it and try again.</source>
        <translation>Der API-Schlüssel wurde abgelehnt. Prüfen Sie ihn und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>This API key doesn’t have access to the provider.</source>
        <translation>Dieser API-Schlüssel hat keinen Zugriff auf den Anbieter.</translation>
    </message>
    <message>
        <source>Models weren’t found. Check that the base URL includes the API version, such as /v1.</source>
        <translation>Keine Modelle gefunden. Prüfen Sie, ob die Basis-URL die API-Version enthält, etwa /v1.</translation>
    </message>
    <message>
        <source>The provider timed out. Try again.</source>
        <translation>Zeitüberschreitung beim Anbieter. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Couldn’t reach the provider. Check the URL and your connection.</source>
        <translation>Der Anbieter war nicht erreichbar. Prüfen Sie die URL und Ihre Verbindung.</translation>
    </message>
    <message>
        <source>The provider returned an invalid model list.</source>
        <translation>Der Anbieter hat eine ungültige Modellliste geliefert.</translation>
    </message>
    <message>
        <source>The provider returned no models.</source>
        <translation>Der Anbieter hat keine Modelle geliefert.</translation>
    </message>
    <message>
        <source>The provider response was too large.</source>
        <translation>Die Antwort des Anbieters war zu groß.</translation>
    </message>
    <message>
        <source>The connection closed before the reply was complete. Try again.</source>
        <translation>Die Verbindung wurde vor dem Ende der Antwort geschlossen. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The provider’s reply contained text that isn’t valid UTF-8. Try again.</source>
        <translation>Die Antwort des Anbieters enthielt Text, der kein gültiges UTF-8 ist. Versuchen Sie es erneut.</translation>
    </message>
</context>
<context>
    <name>ProviderHub</name>
    <message>
        <source>Set a custom Base URL in Presets</source>
        <translation>Legen Sie unter Voreinstellungen eine eigene Basis-URL fest</translation>
    </message>
    <message>
        <source>Choose a model in Presets</source>
        <translation>Wählen Sie unter Voreinstellungen ein Modell</translation>
    </message>
</context>
<context>
    <name>QShortcut</name>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Meta</source>
        <translation>Meta</translation>
    </message>
</context>
<context>
    <name>RewriteCoordinator</name>
    <message>
        <source>Couldn’t fix this text</source>
        <translation>Dieser Text konnte nicht korrigiert werden</translation>
    </message>
    <message>
        <source>Empty model response</source>
        <translation>Leere Antwort des Modells</translation>
    </message>
    <message>
        <source>Add a preset in Presets</source>
        <translation>Fügen Sie unter Voreinstellungen eine Voreinstellung hinzu</translation>
    </message>
    <message>
        <source>No preset</source>
        <translation>Keine Voreinstellung</translation>
    </message>
    <message>
        <source>Status: %1 · Ready</source>
        <translation>Status: %1 · Bereit</translation>
    </message>
    <message>
        <source>Status: %1 · Add API key</source>
        <translation>Status: %1 · API-Schlüssel fehlt</translation>
    </message>
    <message>
        <source>Status: %1 · Unavailable</source>
        <translation>Status: %1 · Nicht verfügbar</translation>
    </message>
</context>
<context>
    <name>RewriteError</name>
    <message>
        <source>The provider returned an unsafe edit. Try again.</source>
        <translation>Der Anbieter hat eine unsichere Änderung geliefert. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Enter some text.</source>
        <translation>Geben Sie Text ein.</translation>
    </message>
    <message>
        <source>This text is too long for the provider.</source>
        <translation>Dieser Text ist zu lang für den Anbieter.</translation>
    </message>
    <message>
        <source>Cancelled. Try again.</source>
        <translation>Abgebrochen. Versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Timed out. Try again.</source>
        <translation>Zeitüberschreitung. Versuchen Sie es erneut.</translation>
    </message>
</context>
<context>
    <name>SettingsStatus</name>
    <message>
        <source>Success. %1</source>
        <translation>Erfolg. %1</translation>
    </message>
    <message>
        <source>Warning. %1</source>
        <translation>Warnung. %1</translation>
    </message>
    <message>
        <source>Error. %1</source>
        <translation>Fehler. %1</translation>
    </message>
</context>
<context>
    <name>SettingsStoreError</name>
    <message>
        <source>Scrivel couldn’t read your settings from %1.</source>
        <translation>Scrivel konnte Ihre Einstellungen nicht aus %1 lesen.</translation>
    </message>
    <message>
        <source>Scrivel couldn’t save your settings to %1.</source>
        <translation>Scrivel konnte Ihre Einstellungen nicht in %1 speichern.</translation>
    </message>
</context>
<context>
    <name>Shortcut</name>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
</context>
<context>
    <name>UnavailableOnDeviceModel</name>
    <message>
        <source>No on-device model is available on this system</source>
        <translation>Auf diesem System ist kein lokales Modell verfügbar</translation>
    </message>
</context>
<context>
    <name>UnavailableReason</name>
    <message>
        <source>Connect this preset to a provider in Presets</source>
        <translation>Verbinden Sie diese Voreinstellung unter Voreinstellungen mit einem Anbieter</translation>
    </message>
    <message>
        <source>Couldn’t access the API key in Scrivel’s key file</source>
        <translation>Kein Zugriff auf den API-Schlüssel in der Schlüsseldatei von Scrivel</translation>
    </message>
    <message>
        <source>Couldn’t access the API key in the desktop’s keyring</source>
        <translation>Kein Zugriff auf den API-Schlüssel im Schlüsselbund der Arbeitsumgebung</translation>
    </message>
    <message>
        <source>API key was rejected. Check it in Presets.</source>
        <translation>Der API-Schlüssel wurde abgelehnt. Prüfen Sie ihn unter Voreinstellungen.</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Open or close the Scrivel panel</source>
        <translation>Scrivel-Panel öffnen oder schließen</translation>
    </message>
</context>
<context>
    <name>scrivel</name>
    <message>
        <source>no display found (DISPLAY and WAYLAND_DISPLAY are unset); start Scrivel from a desktop session.</source>
        <translation>keine Anzeige gefunden (DISPLAY und WAYLAND_DISPLAY sind nicht gesetzt); starten Sie Scrivel in einer Desktop-Sitzung.</translation>
    </message>
    <message>
        <source>Rewrites text with a language model from a floating panel.</source>
        <translation>Schreibt Text mit einem Sprachmodell aus einem schwebenden Panel um.</translation>
    </message>
    <message>
        <source>Show or hide the panel of the running Scrivel (starting it if needed). Bind this to a desktop shortcut where global shortcuts are unavailable.</source>
        <translation>Das Panel des laufenden Scrivel ein- oder ausblenden (und Scrivel nötigenfalls starten). Legen Sie dies auf ein Tastenkürzel der Arbeitsumgebung, wo globale Tastenkürzel nicht verfügbar sind.</translation>
    </message>
    <message>
        <source>the running Scrivel did not answer.</source>
        <translation>das laufende Scrivel hat nicht geantwortet.</translation>
    </message>
    <message>
        <source>--toggle cannot reach a running Scrivel: %1.</source>
        <translation>--toggle erreicht kein laufendes Scrivel: %1.</translation>
    </message>
    <message>
        <source>%1; running without the single-instance check, and `scrivel --toggle` cannot reach this instance.</source>
        <translation>%1; Scrivel läuft ohne Prüfung auf eine zweite Instanz, und „scrivel --toggle“ erreicht diese Instanz nicht.</translation>
    </message>
</context>
<context>
    <name>scrivel::AppDelegate</name>
    <message>
        <source>This sentense has a typo.</source>
        <translation>Dieser Satz hat einen Tippfeler.</translation>
    </message>
</context>
<context>
    <name>scrivel::BusyIndicator</name>
    <message>
        <source>Running…</source>
        <translation>Läuft …</translation>
    </message>
</context>
<context>
    <name>scrivel::FixPanelControlsRow</name>
    <message>
        <source>Open Presets…</source>
        <translation>Voreinstellungen öffnen …</translation>
    </message>
    <message>
        <source>Revert</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Run</source>
        <translation>Ausführen</translation>
    </message>
    <message>
        <source>Running…</source>
        <translation>Läuft …</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Preset</source>
        <translation>Voreinstellung</translation>
    </message>
</context>
<context>
    <name>scrivel::FixPanelModel</name>
    <message>
        <source>Couldn’t copy the result. Select and copy it manually.</source>
        <translation>Das Ergebnis konnte nicht kopiert werden. Markieren und kopieren Sie es von Hand.</translation>
    </message>
    <message>
        <source>Couldn’t transform this text. Try again.</source>
        <translation>Dieser Text konnte nicht umgeschrieben werden. Versuchen Sie es erneut.</translation>
    </message>
</context>
<context>
    <name>scrivel::FixPanelWindow</name>
    <message>
        <source>Scrivel Panel</source>
        <translation>Scrivel-Panel</translation>
    </message>
</context>
<context>
    <name>scrivel::GeneralSettingsModel</name>
    <message>
        <source>Allow Scrivel in your desktop’s autostart settings.</source>
        <translation>Erlauben Sie Scrivel in den Autostart-Einstellungen Ihrer Arbeitsumgebung.</translation>
    </message>
    <message>
        <source>Allow Scrivel in your desktop’s autostart settings, then return here. The shortcut opens the panel anywhere; Ctrl+1–Ctrl+9 pick presets in sidebar order.</source>
        <translation>Erlauben Sie Scrivel in den Autostart-Einstellungen Ihrer Arbeitsumgebung und kehren Sie dann hierher zurück. Das Tastenkürzel öffnet das Panel überall; Strg+1–Strg+9 wählen Voreinstellungen in der Reihenfolge der Seitenleiste.</translation>
    </message>
    <message>
        <source>The shortcut opens the panel anywhere. Paste text, press Return, then paste the result. In the panel, Ctrl+1–Ctrl+9 pick the first nine presets in sidebar order.</source>
        <translation>Das Tastenkürzel öffnet das Panel überall. Text einfügen, die Eingabetaste drücken, dann das Ergebnis einfügen. Im Panel wählen Strg+1–Strg+9 die ersten neun Voreinstellungen in der Reihenfolge der Seitenleiste.</translation>
    </message>
</context>
<context>
    <name>scrivel::GlobalShortcutField</name>
    <message>
        <source>Change…</source>
        <translation>Ändern …</translation>
    </message>
    <message>
        <source>Keyboard shortcut</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Opens the desktop’s shortcut settings for Scrivel</source>
        <translation>Öffnet die Tastenkürzel-Einstellungen der Arbeitsumgebung für Scrivel</translation>
    </message>
</context>
<context>
    <name>scrivel::InstructionsEditor</name>
    <message>
        <source>Instructions</source>
        <translation>Anweisungen</translation>
    </message>
    <message>
        <source>Describe the transform. Panel text is sent with these instructions.</source>
        <translation>Beschreiben Sie die Umformung. Der Text im Panel wird mit diesen Anweisungen gesendet.</translation>
    </message>
</context>
<context>
    <name>scrivel::MainWindow</name>
    <message>
        <source>Select a preset</source>
        <translation>Wählen Sie eine Voreinstellung</translation>
    </message>
    <message>
        <source>Scrivel</source>
        <translation>Scrivel</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Import Presets…</source>
        <translation>Voreinstellungen importieren …</translation>
    </message>
    <message>
        <source>Export Presets…</source>
        <translation>Voreinstellungen exportieren …</translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation>Fenster schließen</translation>
    </message>
    <message>
        <source>Quit Scrivel</source>
        <translation>Scrivel beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>&amp;Presets</source>
        <translation>&amp;Voreinstellungen</translation>
    </message>
    <message>
        <source>Add Preset</source>
        <translation>Voreinstellung hinzufügen</translation>
    </message>
    <message>
        <source>Use This Preset</source>
        <translation>Diese Voreinstellung verwenden</translation>
    </message>
    <message>
        <source>Delete Preset</source>
        <translation>Voreinstellung löschen</translation>
    </message>
    <message>
        <source>Add from Pack…</source>
        <translation>Aus Paket hinzufügen …</translation>
    </message>
    <message>
        <source>&amp;Settings</source>
        <translation>&amp;Einstellungen</translation>
    </message>
    <message>
        <source>Configure Scrivel…</source>
        <translation>Scrivel einrichten …</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>About Scrivel</source>
        <translation>Über Scrivel</translation>
    </message>
    <message>
        <source>Scrivel %1</source>
        <translation>Scrivel %1</translation>
    </message>
    <message>
        <source>Rewrites text with a large language model.</source>
        <translation>Schreibt Text mit einem großen Sprachmodell um.</translation>
    </message>
    <message>
        <source>Licence: %1</source>
        <translation>Lizenz: %1</translation>
    </message>
    <message>
        <source>Settings and presets are kept in %1.</source>
        <translation>Einstellungen und Voreinstellungen werden in %1 gespeichert.</translation>
    </message>
    <message>
        <source>API keys are kept in %1, readable only by you.</source>
        <translation>API-Schlüssel werden in %1 gespeichert, nur für Sie lesbar.</translation>
    </message>
    <message>
        <source>API keys are kept in the desktop’s keyring (Secret Service).</source>
        <translation>API-Schlüssel liegen im Schlüsselbund der Arbeitsumgebung (Secret Service).</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>scrivel::MainWindowModel</name>
    <message>
        <source>Delete this preset?</source>
        <translation>Diese Voreinstellung löschen?</translation>
    </message>
    <message>
        <source>“%1” will be permanently deleted.</source>
        <translation>„%1“ wird endgültig gelöscht.</translation>
    </message>
    <message>
        <source>The hotkey runs this preset</source>
        <translation>Das Tastenkürzel führt diese Voreinstellung aus</translation>
    </message>
    <message>
        <source>Choose Use Preset to run this from the hotkey</source>
        <translation>Wählen Sie „Verwenden“, um sie mit dem Tastenkürzel auszuführen</translation>
    </message>
</context>
<context>
    <name>scrivel::PanelTextEditor</name>
    <message>
        <source>Paste or type text</source>
        <translation>Text einfügen oder eingeben</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
</context>
<context>
    <name>scrivel::PresetConnectionView</name>
    <message>
        <source>API key</source>
        <translation>API-Schlüssel</translation>
    </message>
    <message>
        <source>Loading models</source>
        <translation>Modelle werden geladen</translation>
    </message>
    <message>
        <source>Hide API key</source>
        <translation>API-Schlüssel verbergen</translation>
    </message>
    <message>
        <source>Show API key</source>
        <translation>API-Schlüssel anzeigen</translation>
    </message>
    <message>
        <source>Remove Key</source>
        <translation>Schlüssel entfernen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Remove API Key</source>
        <translation>API-Schlüssel entfernen</translation>
    </message>
</context>
<context>
    <name>scrivel::PresetEditorModel</name>
    <message>
        <source>This sentense has a typo.</source>
        <translation>Dieser Satz hat einen Tippfeler.</translation>
    </message>
    <message>
        <source>Remove this API key?</source>
        <translation>Diesen API-Schlüssel entfernen?</translation>
    </message>
    <message>
        <source>No other preset uses this key.</source>
        <translation>Keine andere Voreinstellung verwendet diesen Schlüssel.</translation>
    </message>
    <message>
        <source>“%1” also uses this key and will stop working.</source>
        <translation>„%1“ verwendet diesen Schlüssel ebenfalls und wird nicht mehr funktionieren.</translation>
    </message>
    <message numerus="yes">
        <source>%n other preset(s) use this key and will stop working: %1.</source>
        <translation>
            <numerusform>%n weitere Voreinstellung verwendet diesen Schlüssel und wird nicht mehr funktionieren: %1.</numerusform>
            <numerusform>%n weitere Voreinstellungen verwenden diesen Schlüssel und werden nicht mehr funktionieren: %1.</numerusform>
        </translation>
    </message>
    <message>
        <source>Optional</source>
        <translation>Optional</translation>
    </message>
    <message>
        <source>Required</source>
        <translation>Erforderlich</translation>
    </message>
    <message>
        <source>On Device is ready.</source>
        <translation>Das lokale Modell ist bereit.</translation>
    </message>
    <message>
        <source>OpenAI-compatible base URL. API keys are optional for local servers.</source>
        <translation>OpenAI-kompatible Basis-URL. Für lokale Server ist ein API-Schlüssel optional.</translation>
    </message>
    <message>
        <source>One key per provider, shared by every preset that uses it.</source>
        <translation>Ein Schlüssel je Anbieter, geteilt von allen Voreinstellungen, die ihn nutzen.</translation>
    </message>
</context>
<context>
    <name>scrivel::PresetEditorView</name>
    <message>
        <source>Preset</source>
        <translation>Voreinstellung</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Use Preset</source>
        <translation>Verwenden</translation>
    </message>
    <message>
        <source>Run this preset from the hotkey</source>
        <translation>Diese Voreinstellung mit dem Tastenkürzel ausführen</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Provider</source>
        <translation>Anbieter</translation>
    </message>
    <message>
        <source>Base URL</source>
        <translation>Basis-URL</translation>
    </message>
    <message>
        <source>API key</source>
        <translation>API-Schlüssel</translation>
    </message>
    <message>
        <source>Models</source>
        <translation>Modelle</translation>
    </message>
    <message>
        <source>Test Preset</source>
        <translation>Voreinstellung testen</translation>
    </message>
    <message>
        <source>Checks that this preset can reach the provider.</source>
        <translation>Prüft, ob diese Voreinstellung den Anbieter erreicht.</translation>
    </message>
    <message>
        <source>Running test</source>
        <translation>Test läuft</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Testen</translation>
    </message>
    <message>
        <source>Get an API key</source>
        <translation>API-Schlüssel besorgen</translation>
    </message>
    <message>
        <source>Choose a model</source>
        <translation>Modell wählen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Stop the test</source>
        <translation>Test abbrechen</translation>
    </message>
</context>
<context>
    <name>scrivel::PresetPackPickerDialog</name>
    <message>
        <source>Untitled Pack</source>
        <translation>Unbenanntes Paket</translation>
    </message>
    <message numerus="yes">
        <source>%n preset(s)</source>
        <translation>
            <numerusform>%n Voreinstellung</numerusform>
            <numerusform>%n Voreinstellungen</numerusform>
        </translation>
    </message>
    <message>
        <source>Add from Pack</source>
        <translation>Aus Paket hinzufügen</translation>
    </message>
    <message>
        <source>No bundled packs found.</source>
        <translation>Keine mitgelieferten Pakete gefunden.</translation>
    </message>
    <message>
        <source>Adds copies of the pack’s presets. Your API keys are not changed.</source>
        <translation>Fügt Kopien der Voreinstellungen des Pakets hinzu. Ihre API-Schlüssel bleiben unverändert.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Add Presets</source>
        <translation>Hinzufügen</translation>
    </message>
</context>
<context>
    <name>scrivel::PresetSidebar</name>
    <message>
        <source>Add a preset, copied from the selected one</source>
        <translation>Eine Voreinstellung hinzufügen, kopiert von der ausgewählten</translation>
    </message>
    <message>
        <source>Add Preset</source>
        <translation>Voreinstellung hinzufügen</translation>
    </message>
    <message>
        <source>Delete the selected preset</source>
        <translation>Die ausgewählte Voreinstellung löschen</translation>
    </message>
    <message>
        <source>Delete Preset</source>
        <translation>Voreinstellung löschen</translation>
    </message>
    <message>
        <source>Import, export, or add presets from a pack</source>
        <translation>Voreinstellungen importieren, exportieren oder aus einem Paket hinzufügen</translation>
    </message>
    <message>
        <source>Preset Transfer</source>
        <translation>Voreinstellungen übertragen</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Voreinstellungen</translation>
    </message>
    <message>
        <source>Active preset</source>
        <translation>Aktive Voreinstellung</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Add from Pack…</source>
        <translation>Aus Paket hinzufügen …</translation>
    </message>
    <message>
        <source>Import…</source>
        <translation>Importieren …</translation>
    </message>
    <message>
        <source>Export All…</source>
        <translation>Alle exportieren …</translation>
    </message>
    <message>
        <source>Export Selected…</source>
        <translation>Auswahl exportieren …</translation>
    </message>
    <message>
        <source>Use This Preset</source>
        <translation>Diese Voreinstellung verwenden</translation>
    </message>
    <message>
        <source>Export Preset…</source>
        <translation>Voreinstellung exportieren …</translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation>Nach oben</translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation>Nach unten</translation>
    </message>
</context>
<context>
    <name>scrivel::PresetSidebarList</name>
    <message>
        <source>Presets</source>
        <translation>Voreinstellungen</translation>
    </message>
</context>
<context>
    <name>scrivel::SelectionPreferences</name>
    <message>
        <source>Needs an X11 session</source>
        <translation>Braucht eine X11-Sitzung</translation>
    </message>
</context>
<context>
    <name>scrivel::SettingsView</name>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Keyboard shortcut</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Open Autostart Settings…</source>
        <translation>Autostart-Einstellungen öffnen …</translation>
    </message>
    <message>
        <source>Unavailable</source>
        <translation>Nicht verfügbar</translation>
    </message>
    <message>
        <source>Launch at login</source>
        <translation>Bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Updates</source>
        <translation>Aktualisierungen</translation>
    </message>
    <message>
        <source>Check for updates automatically</source>
        <translation>Automatisch nach Aktualisierungen suchen</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Nach Aktualisierungen suchen …</translation>
    </message>
    <message>
        <source>Update checks send no information about your system.</source>
        <translation>Die Suche nach Aktualisierungen sendet keine Informationen über Ihr System.</translation>
    </message>
    <message>
        <source>Start with the selected text</source>
        <translation>Mit dem markierten Text beginnen</translation>
    </message>
    <message>
        <source>Replace the selection when done</source>
        <translation>Die Auswahl danach ersetzen</translation>
    </message>
</context>
<context>
    <name>scrivel::ShortcutRecorder</name>
    <message>
        <source>Keyboard shortcut</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Remove Shortcut</source>
        <translation>Tastenkürzel entfernen</translation>
    </message>
    <message>
        <source>Press Shortcut…</source>
        <translation>Tastenkürzel drücken …</translation>
    </message>
    <message>
        <source>Record Shortcut</source>
        <translation>Tastenkürzel aufnehmen</translation>
    </message>
    <message>
        <source>Shortcut in Use</source>
        <translation>Tastenkürzel belegt</translation>
    </message>
    <message>
        <source>This shortcut can’t be used because the “%1” menu item already uses it.</source>
        <translation>Dieses Tastenkürzel kann nicht verwendet werden, weil der Menüeintrag „%1“ es bereits nutzt.</translation>
    </message>
    <message>
        <source>This shortcut is already used by another app or by the system.</source>
        <translation>Dieses Tastenkürzel wird bereits von einer anderen App oder vom System verwendet.</translation>
    </message>
    <message>
        <source>Most system shortcuts can be changed in your desktop’s keyboard settings.</source>
        <translation>Die meisten Systemkürzel lassen sich in den Tastatureinstellungen Ihrer Arbeitsumgebung ändern.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Use Anyway</source>
        <translation>Trotzdem verwenden</translation>
    </message>
</context>
<context>
    <name>scrivel::SingleInstance</name>
    <message>
        <source>the socket %1 cannot be used (%2)</source>
        <translation>der Socket %1 kann nicht verwendet werden (%2)</translation>
    </message>
    <message>
        <source>no session bus, and %1</source>
        <translation>kein Sitzungsbus, und %1</translation>
    </message>
</context>
<context>
    <name>scrivel::StatusItemController</name>
    <message>
        <source>Scrivel</source>
        <translation>Scrivel</translation>
    </message>
    <message>
        <source>Opens the Scrivel menu</source>
        <translation>Öffnet das Scrivel-Menü</translation>
    </message>
    <message>
        <source>Current provider readiness</source>
        <translation>Aktuelle Bereitschaft des Anbieters</translation>
    </message>
    <message>
        <source>Open Panel</source>
        <translation>Panel öffnen</translation>
    </message>
    <message>
        <source>Opens the Scrivel panel</source>
        <translation>Öffnet das Scrivel-Panel</translation>
    </message>
    <message>
        <source>Preset</source>
        <translation>Voreinstellung</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit Scrivel</source>
        <translation>Scrivel beenden</translation>
    </message>
</context>
<context>
    <name>scrivel::StatusItemModel</name>
    <message>
        <source>Scrivel</source>
        <translation>Scrivel</translation>
    </message>
    <message>
        <source>Idle</source>
        <translation>Leerlauf</translation>
    </message>
    <message>
        <source>Status: Checking…</source>
        <translation>Status: Wird geprüft …</translation>
    </message>
    <message>
        <source>Working</source>
        <translation>Arbeitet</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Status: Complete</source>
        <translation>Status: Fertig</translation>
    </message>
    <message>
        <source>Done. Copied. Press Ctrl+V to paste.</source>
        <translation>Fertig. Kopiert. Drücken Sie Strg+V zum Einfügen.</translation>
    </message>
    <message>
        <source>No change</source>
        <translation>Keine Änderung</translation>
    </message>
    <message>
        <source>Status: No change</source>
        <translation>Status: Keine Änderung</translation>
    </message>
    <message>
        <source>No change needed. Nothing was copied.</source>
        <translation>Keine Änderung nötig. Es wurde nichts kopiert.</translation>
    </message>
    <message>
        <source>Status: %1</source>
        <translation>Status: %1</translation>
    </message>
    <message>
        <source>Model unavailable</source>
        <translation>Modell nicht verfügbar</translation>
    </message>
    <message>
        <source>Status: Model unavailable</source>
        <translation>Status: Modell nicht verfügbar</translation>
    </message>
    <message>
        <source>Model unavailable. %1</source>
        <translation>Modell nicht verfügbar. %1</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
</context>
<context>
    <name>scrivel::StorageAlerts</name>
    <message>
        <source>Scrivel</source>
        <translation>Scrivel</translation>
    </message>
    <message>
        <source>Your presets aren’t shown, and nothing is written to the file until Scrivel can read it. Make the file readable, or move it aside, then start Scrivel again.</source>
        <translation>Ihre Voreinstellungen werden nicht angezeigt, und in die Datei wird nichts geschrieben, bis Scrivel sie lesen kann. Machen Sie die Datei lesbar oder verschieben Sie sie, und starten Sie Scrivel dann neu.</translation>
    </message>
    <message>
        <source>Your changes are kept while Scrivel is running, and saved with your next change once the folder can be written to.</source>
        <translation>Ihre Änderungen bleiben erhalten, solange Scrivel läuft, und werden mit Ihrer nächsten Änderung gespeichert, sobald der Ordner beschreibbar ist.</translation>
    </message>
    <message>
        <source>Scrivel has started again with its built-in presets. The copy holds everything that was stored.</source>
        <translation>Scrivel wurde mit den eingebauten Voreinstellungen neu gestartet. Die Kopie enthält alles, was gespeichert war.</translation>
    </message>
    <message>
        <source>Check that the folder can be written to.</source>
        <translation>Prüfen Sie, ob der Ordner beschreibbar ist.</translation>
    </message>
    <message>
        <source>The copy holds everything that was stored.</source>
        <translation>Die Kopie enthält alles, was gespeichert war.</translation>
    </message>
    <message>
        <source>Status: %1</source>
        <translation>Status: %1</translation>
    </message>
</context>
</TS>

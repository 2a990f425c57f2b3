<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>scrivly::AboutPanel</name>
    <message>
        <location filename="../screens/AboutPanel.cpp" line="13"/>
        <source>About Scrivly</source>
        <translation>Über Scrivly</translation>
    </message>
    <message>
        <location filename="../screens/AboutPanel.cpp" line="28"/>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <location filename="../screens/AboutPanel.cpp" line="36"/>
        <source>Export Messages conversations to clean, dated PDFs</source>
        <translation>Nachrichten-Verläufe als saubere, datierte PDFs exportieren</translation>
    </message>
    <message>
        <location filename="../screens/AboutPanel.cpp" line="48"/>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>scrivly::AccessView</name>
    <message>
        <location filename="../screens/AccessView.cpp" line="49"/>
        <source>Let Scrivly read your Messages history</source>
        <translation>Erlaube Scrivly, deinen Nachrichten-Verlauf zu lesen</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="72"/>
        <source>Open Full Disk Access in System Settings</source>
        <translation>Festplattenvollzugriff in den Systemeinstellungen öffnen</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="73"/>
        <source>It’s in System Settings › Privacy &amp; Security › Full Disk Access.</source>
        <translation>Du findest ihn unter Systemeinstellungen › Datenschutz &amp; Sicherheit › Festplattenvollzugriff.</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="74"/>
        <source>Open Full Disk Access Settings</source>
        <translation>Einstellungen für Festplattenvollzugriff öffnen</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="76"/>
        <source>Turn on Scrivly</source>
        <translation>Scrivly einschalten</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="77"/>
        <source>Find Scrivly in the list and turn its switch on. If it isn’t listed, click + and choose Scrivly, or drag it into the list from Finder.</source>
        <translation>Suche Scrivly in der Liste und schalte es ein. Fehlt es, klicke auf + und wähle Scrivly, oder ziehe es aus dem Finder in die Liste.</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="80"/>
        <source>Come back here</source>
        <translation>Hierher zurückkommen</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="81"/>
        <source>Scrivly checks again by itself when you return. If macOS offers to quit and reopen Scrivly, choose Quit &amp; Reopen.</source>
        <translation>Scrivly prüft von selbst erneut, wenn du zurückkommst. Bietet macOS an, Scrivly zu beenden und neu zu öffnen, wähle „Beenden &amp; erneut öffnen“.</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="90"/>
        <location filename="../screens/AccessView.cpp" line="95"/>
        <source>Step %1</source>
        <translation>Schritt %1</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="120"/>
        <source>Scrivly reads a copy of the Messages database and never changes, moves or deletes your messages.</source>
        <translation>Scrivly liest eine Kopie der Nachrichten-Datenbank und ändert, verschiebt oder löscht deine Nachrichten nie.</translation>
    </message>
    <message>
        <location filename="../screens/AccessView.cpp" line="123"/>
        <source>You can turn access off again any time in the same place.</source>
        <translation>Du kannst den Zugriff an derselben Stelle jederzeit wieder ausschalten.</translation>
    </message>
    <message>
        <source>Show Scrivly in Finder</source>
        <translation>Scrivly im Finder zeigen</translation>
    </message>
    <message>
        <source>Check Again</source>
        <translation>Erneut prüfen</translation>
    </message>
</context>
<context>
    <name>scrivly::AppModel</name>
    <message>
        <location filename="../model/AppModel.cpp" line="152"/>
        <source>Me</source>
        <translation>Ich</translation>
    </message>
    <message>
        <location filename="../model/AppModel.cpp" line="409"/>
        <source>1 other</source>
        <translation>1 weitere Person</translation>
    </message>
    <message>
        <location filename="../model/AppModel.cpp" line="410"/>
        <source>%1 others</source>
        <translation>%1 weitere</translation>
    </message>
    <message>
        <location filename="../model/AppModel.cpp" line="462"/>
        <source>This conversation couldn’t be read.</source>
        <translation>Diese Unterhaltung konnte nicht gelesen werden.</translation>
    </message>
</context>
<context>
    <name>scrivly::BackupList</name>
    <message>
        <source>Choose a Backup</source>
        <translation>Backup auswählen</translation>
    </message>
    <message>
        <source>This folder holds several iPhone backups. Choose one.</source>
        <translation>Dieser Ordner enthält mehrere iPhone-Backups. Wähle eines aus.</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Gerät</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>iOS</source>
        <translation>iOS</translation>
    </message>
    <message>
        <source>Last Backup</source>
        <translation>Letztes Backup</translation>
    </message>
    <message>
        <source>Encrypted</source>
        <translation>Verschlüsselt</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
</context>
<context>
    <name>scrivly::BackupOpener</name>
    <message>
        <source>There is no iPhone backup in this folder. Choose the folder that holds the backup, or the one above it.</source>
        <translation>In diesem Ordner liegt kein iPhone-Backup. Wähle den Ordner, der das Backup enthält, oder den darüber.</translation>
    </message>
    <message>
        <source>The backup couldn’t be read: %1</source>
        <translation>Das Backup konnte nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>That password doesn’t open this backup. Check it and try again.</source>
        <translation>Dieses Passwort öffnet das Backup nicht. Prüfe es und versuche es noch einmal.</translation>
    </message>
    <message>
        <source>This backup isn’t finished. Back up the iPhone again, then open it.</source>
        <translation>Dieses Backup ist nicht vollständig. Sichere das iPhone noch einmal und öffne es dann.</translation>
    </message>
    <message>
        <source>This backup holds no Messages history.</source>
        <translation>Dieses Backup enthält keinen Nachrichten-Verlauf.</translation>
    </message>
</context>
<context>
    <name>scrivly::BackupSheets</name>
    <message>
        <source>The backup couldn’t be opened</source>
        <translation>Das Backup konnte nicht geöffnet werden</translation>
    </message>
</context>
<context>
    <name>scrivly::DesktopPlatform</name>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="41"/>
        <source>PDF document (*.pdf)</source>
        <translation>PDF-Dokument (*.pdf)</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="42"/>
        <source>CSV file (*.csv)</source>
        <translation>CSV-Datei (*.csv)</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="44"/>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="65"/>
        <source>Use Contacts</source>
        <translation>Kontakte verwenden</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="65"/>
        <source>Where are your contacts?</source>
        <translation>Wo sind deine Kontakte?</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="67"/>
        <source>Scrivly reads names from vCard files (.vcf) exported from your address book, or from a folder that holds them. It remembers your choice and never changes your contacts.</source>
        <translation>Scrivly liest Namen aus vCard-Dateien (.vcf), die aus deinem Adressbuch exportiert wurden, oder aus einem Ordner, der sie enthält. Es merkt sich deine Wahl und ändert deine Kontakte nie.</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="72"/>
        <source>Use This Mac’s Contacts</source>
        <translation>Kontakte dieses Mac verwenden</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="74"/>
        <source>Choose vCard Files…</source>
        <translation>vCard-Dateien auswählen …</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="75"/>
        <source>Choose a Folder…</source>
        <translation>Ordner auswählen …</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="76"/>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="86"/>
        <source>Choose vCard Files</source>
        <translation>vCard-Dateien auswählen</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="87"/>
        <source>vCard files (*.vcf *.vcard)</source>
        <translation>vCard-Dateien (*.vcf *.vcard)</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="87"/>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <location filename="../screens/DesktopPlatform.cpp" line="92"/>
        <source>Choose a Contacts Folder</source>
        <translation>Kontakte-Ordner auswählen</translation>
    </message>
</context>
<context>
    <name>scrivly::ExportFlow</name>
    <message>
        <location filename="../model/ExportFlow.cpp" line="51"/>
        <source>Page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="56"/>
        <source>Participants</source>
        <translation>Teilnehmer</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="57"/>
        <source>Dates</source>
        <translation>Zeitraum</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="58"/>
        <source>All messages</source>
        <translation>Alle Nachrichten</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="59"/>
        <location filename="../model/ExportFlow.cpp" line="149"/>
        <location filename="../model/ExportFlow.cpp" line="155"/>
        <source>Messages</source>
        <translation>Nachrichten</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="60"/>
        <location filename="../model/ExportFlow.cpp" line="104"/>
        <source>Attachments</source>
        <translation>Anhänge</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="61"/>
        <source>Exported</source>
        <translation>Exportiert</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="62"/>
        <source>Times shown in</source>
        <translation>Uhrzeiten in</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="63"/>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="67"/>
        <source>Included: %1</source>
        <translation>Enthalten: %1</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="71"/>
        <location filename="../model/ExportFlow.cpp" line="105"/>
        <source>Reactions</source>
        <translation>Reaktionen</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="74"/>
        <source>Loved</source>
        <translation>Geliebt</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="75"/>
        <source>Liked</source>
        <translation>Gefällt</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="76"/>
        <source>Disliked</source>
        <translation>Gefällt nicht</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="77"/>
        <source>Laughed</source>
        <translation>Gelacht</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="78"/>
        <source>Emphasized</source>
        <translation>Hervorgehoben</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="79"/>
        <source>Questioned</source>
        <translation>Fragend</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="93"/>
        <source>Attachment: %1 (%2)</source>
        <translation>Anhang: %1 (%2)</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="98"/>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="99"/>
        <source>Time</source>
        <translation>Uhrzeit</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="100"/>
        <source>Timestamp (ISO 8601)</source>
        <translation>Zeitstempel (ISO 8601)</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="101"/>
        <source>Sender</source>
        <translation>Absender</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="102"/>
        <source>From Me</source>
        <translation>Von mir</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="103"/>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="107"/>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="108"/>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <location filename="../model/ExportFlow.cpp" line="255"/>
        <location filename="../model/ExportFlow.cpp" line="284"/>
        <source>The export couldn’t be saved: %1</source>
        <translation>Der Export konnte nicht gesichert werden: %1</translation>
    </message>
    <message>
        <source>The iPhone backup of “%1”</source>
        <translation>Das iPhone-Backup von „%1“</translation>
    </message>
    <message>
        <source>(iOS %1)</source>
        <translation>(iOS %1)</translation>
    </message>
    <message>
        <source>, made %1 UTC</source>
        <translation>, erstellt am %1 UTC</translation>
    </message>
    <message>
        <source>%1, read by Scrivly. Scrivly lays the messages out; it doesn’t change their wording.</source>
        <translation>%1, gelesen von Scrivly. Scrivly ordnet die Nachrichten nur an; ihren Wortlaut ändert es nicht.</translation>
    </message>
    <message>
        <source>The Messages database %1</source>
        <translation>Die Nachrichten-Datenbank %1</translation>
    </message>
    <message>
        <source>The Messages database %1 in %2</source>
        <translation>Die Nachrichten-Datenbank %1 in %2</translation>
    </message>
    <message>
        <source>The demonstration history</source>
        <translation>Der Beispielverlauf</translation>
    </message>
</context>
<context>
    <name>scrivly::ExportSheet</name>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="53"/>
        <source>Cover page with participants, dates and counts</source>
        <translation>Deckblatt mit Teilnehmern, Zeitraum und Anzahlen</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="54"/>
        <source>Photos in the PDF</source>
        <translation>Fotos im PDF</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="55"/>
        <location filename="../screens/ExportSheet.cpp" line="93"/>
        <source>First number</source>
        <translation>Erste Nummer</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="57"/>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="57"/>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="58"/>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="59"/>
        <source>Export CSV…</source>
        <translation>CSV exportieren …</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="60"/>
        <source>Export PDF…</source>
        <translation>PDF exportieren …</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="61"/>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="67"/>
        <source>Document</source>
        <translation>Dokument</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="70"/>
        <source>Messages with…</source>
        <translation>Nachrichten mit …</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="71"/>
        <source>Optional, e.g. a case name</source>
        <translation>Optional, z. B. ein Aktenzeichen</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="72"/>
        <source>US Letter</source>
        <translation>US Letter</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="73"/>
        <source>A4</source>
        <translation>A4</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="74"/>
        <location filename="../screens/ExportSheet.cpp" line="98"/>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="75"/>
        <location filename="../screens/ExportSheet.cpp" line="99"/>
        <source>Header on every page</source>
        <translation>Kopfzeile auf jeder Seite</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="76"/>
        <location filename="../screens/ExportSheet.cpp" line="100"/>
        <source>Paper</source>
        <translation>Papier</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="81"/>
        <source>Page numbers</source>
        <translation>Seitenzahlen</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="84"/>
        <source>Every page shows “Page 1 of 12”. Add a prefix to also number pages Bates-style at the bottom right.</source>
        <translation>Jede Seite zeigt „Seite 1 von 12“. Mit einem Präfix werden die Seiten zusätzlich unten rechts im Bates-Stil nummeriert.</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="90"/>
        <source>Optional, e.g. SMITH-</source>
        <translation>Optional, z. B. MUELLER-</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="91"/>
        <location filename="../screens/ExportSheet.cpp" line="101"/>
        <source>Number prefix</source>
        <translation>Nummern-Präfix</translation>
    </message>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="105"/>
        <location filename="../screens/ExportSheet.cpp" line="109"/>
        <source>Making the PDF…</source>
        <translation>PDF wird erstellt …</translation>
    </message>
</context>
<context>
    <name>scrivly::HelpView</name>
    <message>
        <location filename="../screens/HelpView.cpp" line="30"/>
        <source>Getting started</source>
        <translation>Erste Schritte</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="35"/>
        <source>Choose Use Contacts so phone numbers and emails show as names. Without it, exports show the numbers.</source>
        <translation>Wähle „Kontakte verwenden“, damit Telefonnummern und E-Mail-Adressen als Namen erscheinen. Ohne das zeigen Exporte die Nummern.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="37"/>
        <source>Pick a person or group on the left. One person’s iMessage and text-message (SMS) chats are shown together.</source>
        <translation>Wähle links eine Person oder Gruppe. iMessage- und SMS-Chats mit derselben Person werden zusammen gezeigt.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="40"/>
        <source>Exporting</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="42"/>
        <source>Set a date range with From and To (whole days), then choose Export… (%1). Preview shows the PDF before you save it.</source>
        <translation>Lege mit „Von“ und „Bis“ einen Zeitraum fest (ganze Tage) und wähle dann „Exportieren …“ (%1). Die Vorschau zeigt das PDF, bevor du es sicherst.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="45"/>
        <source>PDFs label every sender, show the time of each message, put photos inline (iPhone HEIC photos become JPEG), list other files by name, and show reactions as text under the message.</source>
        <translation>PDFs nennen jeden Absender, zeigen die Uhrzeit jeder Nachricht, setzen Fotos in den Text (HEIC-Fotos vom iPhone werden zu JPEG), führen andere Dateien mit Namen auf und zeigen Reaktionen als Text unter der Nachricht.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="48"/>
        <source>Every page is numbered “Page 1 of 12”. Add a number prefix for Bates-style numbers at the bottom right (SMITH-000001, SMITH-000002…), and a header such as a case name at the top of every page. The cover page lists the participants, dates and counts.</source>
        <translation>Jede Seite trägt „Seite 1 von 12“. Mit einem Nummern-Präfix kommen Bates-Nummern unten rechts dazu (MUELLER-000001, MUELLER-000002 …), mit einer Kopfzeile etwa ein Aktenzeichen oben auf jeder Seite. Das Deckblatt nennt Teilnehmer, Zeitraum und Anzahlen.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="51"/>
        <source>CSV saves one row per message (date, time, sender, text, attachments, reactions) for Numbers or Excel.</source>
        <translation>CSV sichert eine Zeile pro Nachricht (Datum, Uhrzeit, Absender, Text, Anhänge, Reaktionen) für Numbers oder Excel.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="53"/>
        <source>Scrivly lays messages out; it doesn’t change their wording. Whether a printout is accepted somewhere (a court, an insurer) is up to them: ask before you rely on it.</source>
        <translation>Scrivly setzt Nachrichten nur; ihren Wortlaut ändert es nicht. Ob ein Ausdruck irgendwo anerkannt wird (vor Gericht, bei einer Versicherung), entscheiden die Empfänger: Frag nach, bevor du dich darauf verlässt.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="57"/>
        <source>Missing messages or photos</source>
        <translation>Fehlende Nachrichten oder Fotos</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="65"/>
        <source>Unsent messages aren’t included: Messages doesn’t keep their words.</source>
        <translation>Zurückgerufene Nachrichten fehlen: Nachrichten bewahrt ihren Wortlaut nicht auf.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="67"/>
        <source>Your data and privacy</source>
        <translation>Deine Daten und Datenschutz</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="69"/>
        <source>Each time Scrivly reads your messages (the list, or a conversation you open), it copies the Messages database into a private temporary folder, reads the copy and deletes it right away. No copy is kept between reads, and if Scrivly stops unexpectedly, it clears anything left the next time it opens. It never writes to Messages’ files, and nothing about your messages or contacts is uploaded or sent anywhere.</source>
        <translation>Jedes Mal, wenn Scrivly deine Nachrichten liest (die Liste oder eine geöffnete Unterhaltung), kopiert es die Nachrichten-Datenbank in einen privaten temporären Ordner, liest die Kopie und löscht sie sofort. Zwischen zwei Lesevorgängen bleibt keine Kopie liegen, und falls Scrivly unerwartet endet, räumt es beim nächsten Öffnen alles Übrige weg. Es schreibt nie in die Dateien von Nachrichten, und nichts über deine Nachrichten oder Kontakte wird hochgeladen oder irgendwohin gesendet.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="75"/>
        <source>Exports are new files, saved only where you choose.</source>
        <translation>Exporte sind neue Dateien, gesichert nur dort, wo du es bestimmst.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="76"/>
        <source>Scrivly connects to the internet only to look for updates on its website, %1. It sends nothing about you or your messages when it does.</source>
        <translation>Scrivly verbindet sich nur mit dem Internet, um auf seiner Website %1 nach Updates zu suchen. Dabei sendet es nichts über dich oder deine Nachrichten.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="80"/>
        <source>Support</source>
        <translation>Support</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="82"/>
        <source>Questions, ideas or a problem? Email %1; a person reads every message.</source>
        <translation>Fragen, Ideen oder ein Problem? Schreib an %1; ein Mensch liest jede Nachricht.</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="90"/>
        <source>Scrivly Help</source>
        <translation>Scrivly-Hilfe</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="101"/>
        <source>Help topics</source>
        <translation>Hilfethemen</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="110"/>
        <source>Help text</source>
        <translation>Hilfetext</translation>
    </message>
    <message>
        <location filename="../screens/HelpView.cpp" line="120"/>
        <source>Scrivly on the web: %1</source>
        <translation>Scrivly im Web: %1</translation>
    </message>
</context>
<context>
    <name>scrivly::MainView</name>
    <message>
        <location filename="../screens/MainView.cpp" line="75"/>
        <location filename="../screens/MainView.cpp" line="76"/>
        <source>Search names or numbers</source>
        <translation>Namen oder Nummern suchen</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="81"/>
        <source>Reload Messages</source>
        <translation>Nachrichten neu laden</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="82"/>
        <source>Read Messages again for anything new (%1)</source>
        <translation>Nachrichten erneut lesen, um Neues zu sehen (%1)</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="86"/>
        <location filename="../screens/MainView.cpp" line="88"/>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="89"/>
        <source>Export this conversation as a PDF or CSV (%1)</source>
        <translation>Diese Unterhaltung als PDF oder CSV exportieren (%1)</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="99"/>
        <source>Conversations</source>
        <translation>Unterhaltungen</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="102"/>
        <source>No Conversations</source>
        <translation>Keine Unterhaltungen</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="210"/>
        <source>Show names instead of numbers.</source>
        <translation>Namen statt Nummern zeigen.</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="211"/>
        <source>Use Contacts</source>
        <translation>Kontakte verwenden</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="216"/>
        <source>Contacts is off: numbers show instead of names.</source>
        <translation>Kontakte ist aus: Statt Namen erscheinen Nummern.</translation>
    </message>
    <message>
        <location filename="../screens/MainView.cpp" line="217"/>
        <source>Open Settings</source>
        <translation>Einstellungen öffnen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alle auswählen</translation>
    </message>
    <message>
        <source>Produce…</source>
        <translation>Produktion erstellen …</translation>
    </message>
    <message>
        <source>Produce them as one set of numbered documents, or choose one to see its messages.</source>
        <translation>Erstelle daraus eine Produktion nummerierter Dokumente, oder wähle eine aus, um ihre Nachrichten zu sehen.</translation>
    </message>
    <message>
        <source>%1 Conversations Selected</source>
        <translation>%1 Unterhaltungen ausgewählt</translation>
    </message>
</context>
<context>
    <name>scrivly::MainWindow</name>
    <message>
        <location filename="../screens/MainWindow.cpp" line="49"/>
        <source>Check Again</source>
        <translation>Erneut prüfen</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="53"/>
        <source>Open a Messages Database…</source>
        <translation>Nachrichten-Datenbank öffnen …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="55"/>
        <source>Try the Sample History</source>
        <translation>Beispielverlauf ausprobieren</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="59"/>
        <source>Reading your Messages history…</source>
        <translation>Dein Nachrichten-Verlauf wird gelesen …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="60"/>
        <source>Messages couldn’t be read</source>
        <translation>Nachrichten konnten nicht gelesen werden</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="61"/>
        <source>Try Again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="87"/>
        <source>Open Messages Database…</source>
        <translation>Nachrichten-Datenbank öffnen …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="91"/>
        <source>Export…</source>
        <translation>Exportieren …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="94"/>
        <source>Preview PDF</source>
        <translation>PDF-Vorschau</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="95"/>
        <source>Export as CSV…</source>
        <translation>Als CSV exportieren …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="98"/>
        <source>Reload Messages</source>
        <translation>Nachrichten neu laden</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="101"/>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="105"/>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="106"/>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="114"/>
        <source>Settings…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="118"/>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="119"/>
        <source>Scrivly Help</source>
        <translation>Scrivly-Hilfe</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="123"/>
        <source>About Scrivly</source>
        <translation>Über Scrivly</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="126"/>
        <source>Check for Updates…</source>
        <translation>Nach Updates suchen …</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="261"/>
        <location filename="../screens/MainWindow.cpp" line="262"/>
        <source>Something went wrong</source>
        <translation>Etwas ist schiefgegangen</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="264"/>
        <location filename="../screens/MainWindow.cpp" line="328"/>
        <location filename="../screens/MainWindow.cpp" line="334"/>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="304"/>
        <source>Open a Messages Database</source>
        <translation>Nachrichten-Datenbank öffnen</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="305"/>
        <source>Messages databases (chat.db sms.db *.db)</source>
        <translation>Nachrichten-Datenbanken (chat.db sms.db *.db)</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="306"/>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="323"/>
        <source>You’re up to date</source>
        <translation>Du bist auf dem neuesten Stand</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="325"/>
        <source> is the newest version. </source>
        <translation> ist die neueste Version. </translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="326"/>
        <source> checks for updates on its own and will let you know when there’s a new one.</source>
        <translation> sucht selbst nach Updates und meldet sich, wenn es ein neues gibt.</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="331"/>
        <source>Couldn’t check for updates</source>
        <translation>Nach Updates suchen ist fehlgeschlagen</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="332"/>
        <source>Check your internet connection and try again. </source>
        <translation>Prüfe deine Internetverbindung und versuche es erneut. </translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="333"/>
        <source> also checks on its own about once a day.</source>
        <translation> sucht außerdem etwa einmal am Tag selbst.</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="337"/>
        <source>A new version of %1 is available</source>
        <translation>Eine neue Version von %1 ist verfügbar</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="339"/>
        <source>%1 %2 is out; you have %3.</source>
        <translation>%1 %2 ist erschienen; du hast %3.</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="340"/>
        <source>Download</source>
        <translation>Laden</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="341"/>
        <source>Later</source>
        <translation>Später</translation>
    </message>
    <message>
        <location filename="../screens/MainWindow.cpp" line="348"/>
        <source>Check for Updates</source>
        <translation>Nach Updates suchen</translation>
    </message>
    <message>
        <source>Open iPhone Backup…</source>
        <translation>iPhone-Backup öffnen …</translation>
    </message>
    <message>
        <source>Open an iPhone Backup…</source>
        <translation>Ein iPhone-Backup öffnen …</translation>
    </message>
    <message>
        <source>Open an iPhone Backup</source>
        <translation>Ein iPhone-Backup öffnen</translation>
    </message>
    <message>
        <source>Choose Attachments Folder…</source>
        <translation>Anhänge-Ordner auswählen …</translation>
    </message>
    <message>
        <source>Choose the folder that holds Library/Messages/Attachments, or the Attachments folder</source>
        <translation>Wähle den Ordner, der Library/Messages/Attachments enthält, oder den Ordner „Attachments“ selbst</translation>
    </message>
    <message>
        <source>Produce…</source>
        <translation>Produktion erstellen …</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alle auswählen</translation>
    </message>
</context>
<context>
    <name>scrivly::PasswordSheet</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Backup Password</source>
        <translation>Backup-Passwort</translation>
    </message>
    <message>
        <source>Enter the password that was set for encrypted backups in Finder or iTunes. Scrivly uses it only to open this backup and never stores it. A lost backup password can’t be recovered, by Scrivly or by Apple.</source>
        <translation>Gib das Passwort ein, das im Finder oder in iTunes für verschlüsselte Backups festgelegt wurde. Scrivly verwendet es nur, um dieses Backup zu öffnen, und speichert es nie. Ein verlorenes Backup-Passwort lässt sich nicht wiederherstellen, weder von Scrivly noch von Apple.</translation>
    </message>
    <message>
        <source>Backup password</source>
        <translation>Backup-Passwort</translation>
    </message>
    <message>
        <source>Unlocking the backup… This takes a few seconds.</source>
        <translation>Das Backup wird entsperrt … Das dauert einige Sekunden.</translation>
    </message>
    <message>
        <source>This iPhone backup is encrypted</source>
        <translation>Dieses iPhone-Backup ist verschlüsselt</translation>
    </message>
    <message>
        <source>The backup of “%1” is encrypted</source>
        <translation>Das Backup von „%1“ ist verschlüsselt</translation>
    </message>
</context>
<context>
    <name>scrivly::PlatformTexts</name>
    <message>
        <source>The Messages history on this Mac, read by Scrivly. Scrivly lays the messages out; it doesn’t change their wording.</source>
        <translation>Der Nachrichten-Verlauf auf diesem Mac, gelesen von Scrivly. Scrivly setzt die Nachrichten nur; ihren Wortlaut ändert es nicht.</translation>
    </message>
    <message>
        <source>Attachment not on this Mac: %1</source>
        <translation>Anhang nicht auf diesem Mac: %1</translation>
    </message>
    <message>
        <source>Not on this Mac: %1</source>
        <translation>Nicht auf diesem Mac: %1</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Im Finder zeigen</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <comment>the macOS menu</comment>
        <translation>&amp;Ablage</translation>
    </message>
    <message>
        <source>No Messages history on this Mac</source>
        <translation>Kein Nachrichten-Verlauf auf diesem Mac</translation>
    </message>
    <message>
        <source>Open Messages and sign in, or turn on Messages in iCloud (Messages › Settings › iMessage) so your conversations download to this Mac. Then check again.</source>
        <translation>Öffne Nachrichten und melde dich an, oder schalte „Nachrichten in iCloud“ ein (Nachrichten › Einstellungen › iMessage), damit deine Unterhaltungen auf diesen Mac geladen werden. Prüfe dann erneut.</translation>
    </message>
    <message>
        <source>Messages on this Mac has no conversations yet.</source>
        <translation>Nachrichten auf diesem Mac hat noch keine Unterhaltungen.</translation>
    </message>
    <message>
        <source>Scrivly reads a copy of your Messages history on this Mac. Nothing is uploaded, and your messages are never changed.</source>
        <translation>Scrivly liest eine Kopie deines Nachrichten-Verlaufs auf diesem Mac. Nichts wird hochgeladen, und deine Nachrichten werden nie verändert.</translation>
    </message>
    <message>
        <source>Everything stays on this Mac. Your messages are never uploaded or sent anywhere.</source>
        <translation>Alles bleibt auf diesem Mac. Deine Nachrichten werden nie hochgeladen oder irgendwohin gesendet.</translation>
    </message>
    <message>
        <source>Your messages stay on this Mac. Questions: %1</source>
        <translation>Deine Nachrichten bleiben auf diesem Mac. Fragen: %1</translation>
    </message>
    <message>
        <source>The first time, Scrivly asks for Full Disk Access: macOS keeps Messages private until you allow an app. Choose Open Full Disk Access Settings, turn Scrivly on, and come back. If macOS offers to quit and reopen Scrivly, choose Quit &amp; Reopen.</source>
        <translation>Beim ersten Start bittet Scrivly um Festplattenvollzugriff: macOS hält Nachrichten privat, bis du einer App den Zugriff erlaubst. Wähle „Einstellungen für Festplattenvollzugriff öffnen“, schalte Scrivly ein und komm zurück. Bietet macOS an, Scrivly zu beenden und neu zu öffnen, wähle „Beenden &amp; erneut öffnen“.</translation>
    </message>
    <message>
        <source>Scrivly reads the Messages history on this Mac. If a conversation or older messages are missing, turn on Messages in iCloud (Messages › Settings › iMessage) and let it download, then choose File › Reload Messages (%1).</source>
        <translation>Scrivly liest den Nachrichten-Verlauf auf diesem Mac. Fehlen eine Unterhaltung oder ältere Nachrichten, schalte „Nachrichten in iCloud“ ein (Nachrichten › Einstellungen › iMessage), lass alles laden und wähle dann Ablage › Nachrichten neu laden (%1).</translation>
    </message>
    <message>
        <source>Photos that Messages keeps only in iCloud show as “not on this Mac”. Open the conversation in Messages to download them, then reload.</source>
        <translation>Fotos, die Nachrichten nur in iCloud aufbewahrt, erscheinen als „nicht auf diesem Mac“. Öffne die Unterhaltung in Nachrichten, um sie zu laden, und lade dann neu.</translation>
    </message>
    <message>
        <source>Attachment not found on this computer: %1</source>
        <translation>Anhang auf diesem Computer nicht gefunden: %1</translation>
    </message>
    <message>
        <source>Not found on this computer: %1</source>
        <translation>Auf diesem Computer nicht gefunden: %1</translation>
    </message>
    <message>
        <source>Show in Folder</source>
        <translation>Im Ordner zeigen</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <comment>the menu elsewhere</comment>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>No Messages history to read</source>
        <translation>Kein Nachrichten-Verlauf zum Lesen</translation>
    </message>
    <message>
        <source>Scrivly reads a Messages history copied from a Mac (chat.db with its Attachments folder, from Library/Messages) or an iPhone backup. Open one, or try the sample history.</source>
        <translation>Scrivly liest einen von einem Mac kopierten Nachrichten-Verlauf (chat.db mit seinem Ordner „Attachments“, aus Library/Messages) oder ein iPhone-Backup. Öffne eines davon oder probiere den Beispielverlauf aus.</translation>
    </message>
    <message>
        <source>This Messages history has no conversations yet.</source>
        <translation>Dieser Nachrichten-Verlauf hat noch keine Unterhaltungen.</translation>
    </message>
    <message>
        <source>Scrivly reads a copy of your Messages history on this computer. Nothing is uploaded, and your messages are never changed.</source>
        <translation>Scrivly liest eine Kopie deines Nachrichten-Verlaufs auf diesem Computer. Nichts wird hochgeladen, und deine Nachrichten werden nie verändert.</translation>
    </message>
    <message>
        <source>Everything stays on this computer. Your messages are never uploaded or sent anywhere.</source>
        <translation>Alles bleibt auf diesem Computer. Deine Nachrichten werden nie hochgeladen oder irgendwohin gesendet.</translation>
    </message>
    <message>
        <source>Your messages stay on this computer. Questions: %1</source>
        <translation>Deine Nachrichten bleiben auf diesem Computer. Fragen: %1</translation>
    </message>
    <message>
        <source>Scrivly reads a Messages history copied from a Mac, or an iPhone backup. Copy the Library/Messages folder from the Mac (chat.db and its Attachments folder) and choose File › Open Messages Database…, or choose File › Open iPhone Backup… for a backup made with Finder or iTunes. Choose Try the Sample History to see how it works without either.</source>
        <translation>Scrivly liest einen von einem Mac kopierten Nachrichten-Verlauf oder ein iPhone-Backup. Kopiere den Ordner Library/Messages vom Mac (chat.db und den Ordner „Attachments“) und wähle Datei › Nachrichten-Datenbank öffnen …, oder wähle Datei › iPhone-Backup öffnen … für ein mit dem Finder oder iTunes erstelltes Backup. Mit „Beispielverlauf ausprobieren“ siehst du, wie es ohne beides geht.</translation>
    </message>
    <message>
        <source>Scrivly reads the database or backup as it was when it was copied. If a conversation or older messages are missing, let Messages download them on the Mac or iPhone first (Messages in iCloud), copy the database or make the backup again, then choose File › Reload Messages (%1).</source>
        <translation>Scrivly liest die Datenbank oder das Backup so, wie es beim Kopieren war. Fehlen eine Unterhaltung oder ältere Nachrichten, lass sie zuerst auf dem Mac oder iPhone von Nachrichten laden („Nachrichten in iCloud“), kopiere die Datenbank erneut oder erstelle das Backup neu und wähle dann Datei › Nachrichten neu laden (%1).</translation>
    </message>
    <message>
        <source>Photos missing from the copy show as “not found on this computer”. Copy the Attachments folder with chat.db and keep it beside it, or show Scrivly where it is with File › Choose Attachments Folder… A backup holds only the photos the phone had downloaded.</source>
        <translation>Fotos, die in der Kopie fehlen, erscheinen als „auf diesem Computer nicht gefunden“. Kopiere den Ordner „Attachments“ mit chat.db und lege ihn daneben, oder zeige Scrivly mit Datei › Anhänge-Ordner auswählen …, wo er liegt. Ein Backup enthält nur die Fotos, die das iPhone geladen hatte.</translation>
    </message>
    <message>
        <source>macOS keeps Messages private until you allow an app. It takes three steps.</source>
        <translation>macOS hält Nachrichten privat, bis du einer App den Zugriff erlaubst. Das geht in drei Schritten.</translation>
    </message>
    <message>
        <source>Your user account isn’t allowed to read this Messages database. Make the file and the folders above it readable to you, or copy it into a folder of your own and open the copy, then check again.</source>
        <translation>Dein Benutzerkonto darf diese Nachrichten-Datenbank nicht lesen. Mach die Datei und die Ordner darüber für dich lesbar, oder kopiere sie in einen eigenen Ordner und öffne die Kopie. Prüfe dann erneut.</translation>
    </message>
</context>
<context>
    <name>scrivly::PreviewSheet</name>
    <message>
        <location filename="../screens/PreviewSheet.cpp" line="18"/>
        <location filename="../screens/PreviewSheet.cpp" line="28"/>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <location filename="../screens/PreviewSheet.cpp" line="41"/>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <location filename="../screens/PreviewSheet.cpp" line="44"/>
        <source>Export PDF…</source>
        <translation>PDF exportieren …</translation>
    </message>
    <message>
        <location filename="../screens/PreviewSheet.cpp" line="56"/>
        <source>1 page</source>
        <translation>1 Seite</translation>
    </message>
    <message>
        <location filename="../screens/PreviewSheet.cpp" line="56"/>
        <source>%1 pages</source>
        <translation>%1 Seiten</translation>
    </message>
</context>
<context>
    <name>scrivly::ProduceFlow</name>
    <message>
        <source>This history has no conversations to produce.</source>
        <translation>Dieser Verlauf enthält keine Unterhaltungen.</translation>
    </message>
    <message>
        <source>Give a number prefix, such as SMITH-: the numbers also name the files.</source>
        <translation>Gib ein Nummern-Präfix an, etwa SMITH-: Die Nummern benennen auch die Dateien.</translation>
    </message>
    <message>
        <source>The number prefix can’t hold “/” or control characters: the numbers also name the files.</source>
        <translation>Das Nummern-Präfix darf kein „/“ und keine Steuerzeichen enthalten: Die Nummern benennen auch die Dateien.</translation>
    </message>
    <message>
        <source>Choose a folder for the production.</source>
        <translation>Wähle einen Ordner für die Produktion.</translation>
    </message>
    <message>
        <source>“%1” is a file. Choose a new or empty folder.</source>
        <translation>„%1“ ist eine Datei. Wähle einen neuen oder leeren Ordner.</translation>
    </message>
    <message>
        <source>The folder “%1” isn’t empty. Choose a new or empty folder.</source>
        <translation>Der Ordner „%1“ ist nicht leer. Wähle einen neuen oder leeren Ordner.</translation>
    </message>
    <message>
        <source>The production couldn’t be made: %1</source>
        <translation>Die Produktion konnte nicht erstellt werden: %1</translation>
    </message>
    <message>
        <source>Produced no documents: the conversations have no messages in these dates.</source>
        <translation>Keine Dokumente erstellt: Die Unterhaltungen haben in diesem Zeitraum keine Nachrichten.</translation>
    </message>
    <message>
        <source>Produced 1 document, %1</source>
        <translation>1 Dokument erstellt, %1</translation>
    </message>
    <message>
        <source>Produced 1 document, %1 to %2</source>
        <translation>1 Dokument erstellt, %1 bis %2</translation>
    </message>
    <message>
        <source>Produced %1 documents, %2 to %3</source>
        <translation>%1 Dokumente erstellt, %2 bis %3</translation>
    </message>
</context>
<context>
    <name>scrivly::ProduceSheet</name>
    <message>
        <source>Production</source>
        <translation>Produktion</translation>
    </message>
    <message>
        <source>One document per day</source>
        <translation>Ein Dokument pro Tag</translation>
    </message>
    <message>
        <source>Split files larger than</source>
        <translation>Dateien aufteilen ab</translation>
    </message>
    <message>
        <source>Include original attachments</source>
        <translation>Originalanhänge beilegen</translation>
    </message>
    <message>
        <source>Include spreadsheets</source>
        <translation>Tabellen beilegen</translation>
    </message>
    <message>
        <source>Include a load file for review platforms</source>
        <translation>Ladedatei für Review-Plattformen beilegen</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Auswählen …</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Produce</source>
        <translation>Produktion erstellen</translation>
    </message>
    <message>
        <source>A production is one folder of PDFs numbered without a gap from first page to last, with a certificate listing every file, as courts and lawyers ask for.</source>
        <translation>Eine Produktion ist ein Ordner mit PDFs, lückenlos von der ersten bis zur letzten Seite nummeriert, mit einem Zertifikat, das jede Datei aufführt – so, wie Gerichte und Kanzleien sie verlangen.</translation>
    </message>
    <message>
        <source>Conversations</source>
        <translation>Unterhaltungen</translation>
    </message>
    <message>
        <source>Dates</source>
        <translation>Zeitraum</translation>
    </message>
    <message>
        <source>Header, paper, cover pages and photos are those of Export (%1).</source>
        <translation>Kopfzeile, Papier, Deckblätter und Fotos wie beim Export (%1).</translation>
    </message>
    <message>
        <source>For example SMITH-</source>
        <translation>Zum Beispiel SMITH-</translation>
    </message>
    <message>
        <source>First number</source>
        <translation>Erste Nummer</translation>
    </message>
    <message>
        <source>Number prefix</source>
        <translation>Nummern-Präfix</translation>
    </message>
    <message>
        <source>Documents</source>
        <translation>Dokumente</translation>
    </message>
    <message>
        <source> MB</source>
        <translation> MB</translation>
    </message>
    <message>
        <source>Custodian</source>
        <translation>Verwahrer</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Producing…</source>
        <translation>Wird erstellt …</translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message>
        <source>Choose a New or Empty Folder for the Production</source>
        <translation>Neuen oder leeren Ordner für die Produktion auswählen</translation>
    </message>
    <message>
        <source>All %1 conversations</source>
        <translation>Alle %1 Unterhaltungen</translation>
    </message>
    <message>
        <source>%1 selected: %2</source>
        <translation>%1 ausgewählt: %2</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>%1 selected: %2 and %3 more</source>
        <translation>%1 ausgewählt: %2 und %3 weitere</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>From %1</source>
        <translation>Ab %1</translation>
    </message>
    <message>
        <source>Until %1</source>
        <translation>Bis %1</translation>
    </message>
    <message>
        <source>All messages</source>
        <translation>Alle Nachrichten</translation>
    </message>
</context>
<context>
    <name>scrivly::SavedLine</name>
    <message>
        <location filename="../screens/ExportSheet.cpp" line="45"/>
        <source>Saved %1</source>
        <translation>Gesichert: %1</translation>
    </message>
</context>
<context>
    <name>scrivly::ScrivlyApp</name>
    <message>
        <source>There is no sheet or window called “%1”.</source>
        <translation>Es gibt kein Blatt und kein Fenster namens „%1“.</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="52"/>
        <source>Export Messages conversations to clean, dated PDFs</source>
        <translation>Nachrichten-Verläufe als saubere, datierte PDFs exportieren</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="58"/>
        <source>Read the made-up sample history.</source>
        <translation>Den erfundenen Beispielverlauf lesen.</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="61"/>
        <source>Read the Messages database at PATH.</source>
        <translation>Die Nachrichten-Datenbank unter PATH lesen.</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="65"/>
        <source>Show Scrivly in this language (for example de).</source>
        <translation>Scrivly in dieser Sprache zeigen (zum Beispiel en).</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="70"/>
        <source>Don’t look for updates on your own.</source>
        <translation>Nicht selbst nach Updates suchen.</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="73"/>
        <source>Save a picture of the window to FILE and quit.</source>
        <translation>Ein Bild des Fensters in FILE sichern und beenden.</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="78"/>
        <source>With --screenshot: the sheet or window to show (welcome, export, preview, produce, settings, help, password).</source>
        <translation>Mit --screenshot: das zu zeigende Blatt oder Fenster (welcome, export, preview, produce, settings, help, password).</translation>
    </message>
    <message>
        <location filename="../screens/ScrivlyApp.cpp" line="84"/>
        <source>With --screenshot: the conversation to show.</source>
        <translation>Mit --screenshot: die zu zeigende Unterhaltung.</translation>
    </message>
    <message>
        <source>Open the iPhone backup in FOLDER.</source>
        <translation>Das iPhone-Backup in FOLDER öffnen.</translation>
    </message>
</context>
<context>
    <name>scrivly::SettingsView</name>
    <message>
        <location filename="../screens/SettingsView.cpp" line="21"/>
        <source>Cover page</source>
        <translation>Deckblatt</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="22"/>
        <source>Photos in PDFs</source>
        <translation>Fotos in PDFs</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="23"/>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="30"/>
        <source>Getting started</source>
        <translation>Erste Schritte</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="32"/>
        <source>Show the Welcome Screen Again</source>
        <translation>Willkommensbildschirm erneut zeigen</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="37"/>
        <source>Exports</source>
        <translation>Exporte</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="40"/>
        <source>Me</source>
        <translation>Ich</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="41"/>
        <location filename="../screens/SettingsView.cpp" line="42"/>
        <source>Your name in exports</source>
        <translation>Dein Name in Exporten</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="43"/>
        <source>US Letter</source>
        <translation>US Letter</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="44"/>
        <source>A4</source>
        <translation>A4</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="45"/>
        <location filename="../screens/SettingsView.cpp" line="46"/>
        <source>Paper</source>
        <translation>Papier</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="51"/>
        <source>Access</source>
        <translation>Zugriff</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="57"/>
        <source>Open Full Disk Access Settings</source>
        <translation>Einstellungen für Festplattenvollzugriff öffnen</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="61"/>
        <source>Open a Messages Database…</source>
        <translation>Nachrichten-Datenbank öffnen …</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="64"/>
        <source>Messages history</source>
        <translation>Nachrichten-Verlauf</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="65"/>
        <source>Contacts</source>
        <translation>Kontakte</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="66"/>
        <source>Scrivly reads a temporary copy of your Messages history and deletes it after each read. Nothing is uploaded.</source>
        <translation>Scrivly liest eine temporäre Kopie deines Nachrichten-Verlaufs und löscht sie nach jedem Lesen. Nichts wird hochgeladen.</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="93"/>
        <source>Check for Updates…</source>
        <translation>Nach Updates suchen …</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="144"/>
        <source>Use Contacts for Names</source>
        <translation>Kontakte für Namen verwenden</translation>
    </message>
    <message>
        <location filename="../screens/SettingsView.cpp" line="144"/>
        <source>Open Contacts Settings</source>
        <translation>Kontakte-Einstellungen öffnen</translation>
    </message>
</context>
<context>
    <name>scrivly::Spinner</name>
    <message>
        <location filename="../screens/Spinner.cpp" line="13"/>
        <source>Working</source>
        <translation>Wird bearbeitet</translation>
    </message>
</context>
<context>
    <name>scrivly::TranscriptDelegate</name>
    <message>
        <location filename="../screens/TranscriptModel.cpp" line="415"/>
        <source>Photo: %1</source>
        <translation>Foto: %1</translation>
    </message>
</context>
<context>
    <name>scrivly::TranscriptModel</name>
    <message>
        <location filename="../screens/TranscriptModel.cpp" line="205"/>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptModel.cpp" line="212"/>
        <source>Photo: %1</source>
        <translation>Foto: %1</translation>
    </message>
</context>
<context>
    <name>scrivly::TranscriptView</name>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="46"/>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="47"/>
        <source>To</source>
        <translation>Bis</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="48"/>
        <source>Preview PDF</source>
        <translation>PDF-Vorschau</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="49"/>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="61"/>
        <source>From date</source>
        <translation>Von-Datum</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="62"/>
        <source>To date</source>
        <translation>Bis-Datum</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="75"/>
        <source>Export this conversation as a PDF or CSV (%1)</source>
        <translation>Diese Unterhaltung als PDF oder CSV exportieren (%1)</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="88"/>
        <source>Choose a Conversation</source>
        <translation>Wähle eine Unterhaltung</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="90"/>
        <source>Pick a person or group on the left to see and export their messages.</source>
        <translation>Wähle links eine Person oder Gruppe, um ihre Nachrichten zu sehen und zu exportieren.</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="92"/>
        <source>No Messages in These Dates</source>
        <translation>Keine Nachrichten in diesem Zeitraum</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="93"/>
        <source>Widen the date range to see more.</source>
        <translation>Erweitere den Zeitraum, um mehr zu sehen.</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="110"/>
        <source>Transcript</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <location filename="../screens/TranscriptView.cpp" line="111"/>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
</context>
<context>
    <name>scrivly::WelcomeView</name>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="17"/>
        <location filename="../screens/WelcomeView.cpp" line="28"/>
        <source>Welcome to Scrivly</source>
        <translation>Willkommen bei Scrivly</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="35"/>
        <source>Export Messages conversations to clean, dated PDFs</source>
        <translation>Nachrichten-Verläufe als saubere, datierte PDFs exportieren</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="51"/>
        <source>Private by design</source>
        <translation>Privat von Grund auf</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="54"/>
        <source>Pick a person or group</source>
        <translation>Person oder Gruppe wählen</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="55"/>
        <source>Search by name or number, set a date range, and see exactly what will be exported.</source>
        <translation>Suche nach Name oder Nummer, lege einen Zeitraum fest und sieh genau, was exportiert wird.</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="57"/>
        <source>Clean PDFs and spreadsheets</source>
        <translation>Saubere PDFs und Tabellen</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="58"/>
        <source>Labeled senders, timestamps, photos inline, reactions as text, page numbers and an optional header or Bates-style numbers.</source>
        <translation>Benannte Absender, Zeitstempel, Fotos im Text, Reaktionen als Text, Seitenzahlen und auf Wunsch eine Kopfzeile oder Bates-Nummern.</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="85"/>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <location filename="../screens/WelcomeView.cpp" line="86"/>
        <source>Get Started</source>
        <translation>Los geht’s</translation>
    </message>
</context>
</TS>

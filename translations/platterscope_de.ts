<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CommandLine</name>
    <message>
        <source>Unknown option &apos;%1&apos;.</source>
        <translation>Unbekannte Option „%1“.</translation>
    </message>
    <message>
        <source>Option &apos;%1&apos; needs a value.</source>
        <translation>Die Option „%1“ braucht einen Wert.</translation>
    </message>
    <message>
        <source>Only one disc can be opened; &apos;%1&apos; is one too many.</source>
        <translation>Es kann nur eine Disc geöffnet werden; „%1“ ist eine zu viel.</translation>
    </message>
    <message>
        <source>A report needs a disc.</source>
        <translation>Ein Bericht braucht eine Disc.</translation>
    </message>
    <message>
        <source>Option &apos;--report&apos; needs a format: text or json.</source>
        <translation>Die Option „--report“ braucht ein Format: text oder json.</translation>
    </message>
    <message>
        <source>Unknown report format &apos;%1&apos;; there are text and json.</source>
        <translation>Unbekanntes Berichtsformat „%1“; es gibt text und json.</translation>
    </message>
    <message>
        <source>Usage: platterscope [OPTION] [DISC]
       platterscope --report text|json DISC

Shows the technical makeup of a DVD-Video or Blu-ray disc. DISC is a disc directory or a disc
image; it is opened at start, once the service has been given a key.

  --report text|json  describe the disc on standard output and exit; needs no window, no key
                      and no network. The exit status is 1 where the disc cannot be read.
  -h, --help          show this text and exit
  -v, --version       show the version and exit

PLATTERSCOPE_SERVICE_URL in the environment overrides the address of the Tessera service:
https for any host, http for this machine alone.
</source>
        <translation>Aufruf: platterscope [OPTION] [DISC]
        platterscope --report text|json DISC

Zeigt, wie eine DVD-Video oder Blu-ray technisch aufgebaut ist. DISC ist ein Disc-Verzeichnis
oder ein Disc-Abbild; es wird beim Start geöffnet, sobald der Dienst einen Schlüssel hat.

  --report text|json  beschreibt die Disc auf der Standardausgabe; braucht weder
                      Fenster noch Schlüssel noch Netzwerk. Der Rückgabewert ist 1, wenn die
                      Disc nicht gelesen werden kann.
  -h, --help          zeigt diesen Text
  -v, --version       zeigt die Version

PLATTERSCOPE_SERVICE_URL in der Umgebung ersetzt die Adresse des Tessera-Dienstes:
https für jeden Rechner, http nur für diesen.
</translation>
    </message>
    <message>
        <source>Try &apos;platterscope --help&apos;.</source>
        <translation>Versuchen Sie „platterscope --help“.</translation>
    </message>
    <message>
        <source>Option &apos;--report&apos; can be given only once.</source>
        <translation>Die Option „--report“ kann nur einmal angegeben werden.</translation>
    </message>
</context>
<context>
    <name>ConfigurationDetailPage</name>
    <message>
        <source>Configuration List</source>
        <translation>Liste der Konfigurationen</translation>
    </message>
    <message>
        <source>Details of the selected title</source>
        <translation>Details des gewählten Titels</translation>
    </message>
    <message>
        <source>Titles of the configuration</source>
        <translation>Titel der Konfiguration</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Title Number</source>
        <translation>Titelnummer</translation>
    </message>
    <message>
        <source>Playlist ID</source>
        <translation>Playlist-ID</translation>
    </message>
</context>
<context>
    <name>ConfigurationListPage</name>
    <message>
        <source>View</source>
        <translation>Ansehen</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>View the selected configuration</source>
        <translation>Die gewählte Konfiguration ansehen</translation>
    </message>
    <message>
        <source>Reload configurations from Tessera after updating them on the website</source>
        <translation>Konfigurationen neu von Tessera laden, nachdem sie auf der Website geändert wurden</translation>
    </message>
    <message>
        <source>Configurations of the disc</source>
        <translation>Konfigurationen der Disc</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>Added By</source>
        <translation>Hinzugefügt von</translation>
    </message>
    <message>
        <source>(No Tessera URL available)</source>
        <translation>(Keine Tessera-Adresse vorhanden)</translation>
    </message>
    <message>
        <source>New Configuration</source>
        <translation>Neue Konfiguration</translation>
    </message>
</context>
<context>
    <name>ConfigurationText</name>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>Movie</source>
        <translation>Film</translation>
    </message>
    <message>
        <source>Episode</source>
        <translation>Folge</translation>
    </message>
    <message>
        <source>Video</source>
        <translation>Video</translation>
    </message>
    <message>
        <source>Music Video</source>
        <translation>Musikvideo</translation>
    </message>
    <message>
        <source>Concert</source>
        <translation>Konzert</translation>
    </message>
    <message>
        <source>Movie Extra</source>
        <translation>Filmextra</translation>
    </message>
    <message>
        <source>Series Extra</source>
        <translation>Serienextra</translation>
    </message>
    <message>
        <source>Season Extra</source>
        <translation>Staffelextra</translation>
    </message>
    <message>
        <source>Video Extra</source>
        <translation>Videoextra</translation>
    </message>
    <message>
        <source>Movie Trailer</source>
        <translation>Filmtrailer</translation>
    </message>
    <message>
        <source>Series Trailer</source>
        <translation>Serientrailer</translation>
    </message>
    <message>
        <source>Season Trailer</source>
        <translation>Staffeltrailer</translation>
    </message>
    <message>
        <source>Game Trailer</source>
        <translation>Spieletrailer</translation>
    </message>
    <message>
        <source>Other</source>
        <translation>Sonstiges</translation>
    </message>
    <message>
        <source>DVD</source>
        <translation>DVD</translation>
    </message>
    <message>
        <source>Blu-ray</source>
        <translation>Blu-ray</translation>
    </message>
    <message>
        <source>(no path information)
</source>
        <translation>(keine Pfadangabe)
</translation>
    </message>
    <message>
        <source>File: %1
</source>
        <translation>Datei: %1
</translation>
    </message>
    <message>
        <source>Note: %1
</source>
        <translation>Anmerkung: %1
</translation>
    </message>
    <message>
        <source>Chapters: %1-%2
</source>
        <translation>Kapitel: %1-%2
</translation>
    </message>
    <message>
        <source>Chapters: up to %1
</source>
        <translation>Kapitel: bis %1
</translation>
    </message>
    <message>
        <source>Chapters: from %1
</source>
        <translation>Kapitel: ab %1
</translation>
    </message>
    <message>
        <source>Matching disc title information is unavailable.
</source>
        <translation>Zum passenden Titel der Disc liegen keine Angaben vor.
</translation>
    </message>
    <message>
        <source>(none)</source>
        <translation>(keine)</translation>
    </message>
    <message>
        <source>Type: %1
Disc ID: %2</source>
        <translation>Art: %1
Disc-ID: %2</translation>
    </message>
    <message>
        <source>
Note: %1</source>
        <translation>
Anmerkung: %1</translation>
    </message>
    <message>
        <source>
Error: %1</source>
        <translation>
Fehler: %1</translation>
    </message>
    <message>
        <source>(unnamed disc)</source>
        <translation>(Disc ohne Namen)</translation>
    </message>
    <message>
        <source>(unnamed title)</source>
        <translation>(Titel ohne Namen)</translation>
    </message>
    <message>
        <source>Type: %1
</source>
        <translation>Art: %1
</translation>
    </message>
</context>
<context>
    <name>DiscWord</name>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>MPEG-1 audio</source>
        <translation>MPEG-1-Ton</translation>
    </message>
    <message>
        <source>MPEG-2 audio</source>
        <translation>MPEG-2-Ton</translation>
    </message>
    <message>
        <source>AC-3 Plus secondary</source>
        <translation>AC-3 Plus sekundär</translation>
    </message>
    <message>
        <source>DTS-HD secondary</source>
        <translation>DTS-HD sekundär</translation>
    </message>
    <message>
        <source>Presentation graphics</source>
        <translation>Untertitelgrafik</translation>
    </message>
    <message>
        <source>Text subtitle</source>
        <translation>Textuntertitel</translation>
    </message>
    <message>
        <source>DVD subpicture</source>
        <translation>DVD-Untertitelbild</translation>
    </message>
    <message>
        <source>Multi-channel</source>
        <translation>Mehrkanal</translation>
    </message>
    <message>
        <source>Combo</source>
        <translation>Kombiniert</translation>
    </message>
    <message>
        <source>1 channels</source>
        <translation>1 Kanäle</translation>
    </message>
    <message>
        <source>2 channels</source>
        <translation>2 Kanäle</translation>
    </message>
    <message>
        <source>3 channels</source>
        <translation>3 Kanäle</translation>
    </message>
    <message>
        <source>4 channels</source>
        <translation>4 Kanäle</translation>
    </message>
    <message>
        <source>5 channels</source>
        <translation>5 Kanäle</translation>
    </message>
    <message>
        <source>6 channels</source>
        <translation>6 Kanäle</translation>
    </message>
    <message>
        <source>7 channels</source>
        <translation>7 Kanäle</translation>
    </message>
    <message>
        <source>8 channels</source>
        <translation>8 Kanäle</translation>
    </message>
</context>
<context>
    <name>Language</name>
    <message>
        <source>Arabic</source>
        <translation>Arabisch</translation>
    </message>
    <message>
        <source>Bulgarian</source>
        <translation>Bulgarisch</translation>
    </message>
    <message>
        <source>Catalan</source>
        <translation>Katalanisch</translation>
    </message>
    <message>
        <source>Chinese</source>
        <translation>Chinesisch</translation>
    </message>
    <message>
        <source>Croatian</source>
        <translation>Kroatisch</translation>
    </message>
    <message>
        <source>Czech</source>
        <translation>Tschechisch</translation>
    </message>
    <message>
        <source>Danish</source>
        <translation>Dänisch</translation>
    </message>
    <message>
        <source>Dutch</source>
        <translation>Niederländisch</translation>
    </message>
    <message>
        <source>English</source>
        <translation>Englisch</translation>
    </message>
    <message>
        <source>Estonian</source>
        <translation>Estnisch</translation>
    </message>
    <message>
        <source>Finnish</source>
        <translation>Finnisch</translation>
    </message>
    <message>
        <source>French</source>
        <translation>Französisch</translation>
    </message>
    <message>
        <source>German</source>
        <translation>Deutsch</translation>
    </message>
    <message>
        <source>Greek</source>
        <translation>Griechisch</translation>
    </message>
    <message>
        <source>Hebrew</source>
        <translation>Hebräisch</translation>
    </message>
    <message>
        <source>Hindi</source>
        <translation>Hindi</translation>
    </message>
    <message>
        <source>Hungarian</source>
        <translation>Ungarisch</translation>
    </message>
    <message>
        <source>Icelandic</source>
        <translation>Isländisch</translation>
    </message>
    <message>
        <source>Indonesian</source>
        <translation>Indonesisch</translation>
    </message>
    <message>
        <source>Italian</source>
        <translation>Italienisch</translation>
    </message>
    <message>
        <source>Japanese</source>
        <translation>Japanisch</translation>
    </message>
    <message>
        <source>Korean</source>
        <translation>Koreanisch</translation>
    </message>
    <message>
        <source>Latvian</source>
        <translation>Lettisch</translation>
    </message>
    <message>
        <source>Lithuanian</source>
        <translation>Litauisch</translation>
    </message>
    <message>
        <source>Malay</source>
        <translation>Malaiisch</translation>
    </message>
    <message>
        <source>Norwegian Bokmal</source>
        <translation>Norwegisch (Bokmål)</translation>
    </message>
    <message>
        <source>Persian</source>
        <translation>Persisch</translation>
    </message>
    <message>
        <source>Polish</source>
        <translation>Polnisch</translation>
    </message>
    <message>
        <source>Portuguese</source>
        <translation>Portugiesisch</translation>
    </message>
    <message>
        <source>Romanian</source>
        <translation>Rumänisch</translation>
    </message>
    <message>
        <source>Russian</source>
        <translation>Russisch</translation>
    </message>
    <message>
        <source>Serbian</source>
        <translation>Serbisch</translation>
    </message>
    <message>
        <source>Slovak</source>
        <translation>Slowakisch</translation>
    </message>
    <message>
        <source>Slovenian</source>
        <translation>Slowenisch</translation>
    </message>
    <message>
        <source>Spanish</source>
        <translation>Spanisch</translation>
    </message>
    <message>
        <source>Swedish</source>
        <translation>Schwedisch</translation>
    </message>
    <message>
        <source>Tamil</source>
        <translation>Tamil</translation>
    </message>
    <message>
        <source>Telugu</source>
        <translation>Telugu</translation>
    </message>
    <message>
        <source>Thai</source>
        <translation>Thai</translation>
    </message>
    <message>
        <source>Turkish</source>
        <translation>Türkisch</translation>
    </message>
    <message>
        <source>Ukrainian</source>
        <translation>Ukrainisch</translation>
    </message>
    <message>
        <source>Urdu</source>
        <translation>Urdu</translation>
    </message>
    <message>
        <source>Vietnamese</source>
        <translation>Vietnamesisch</translation>
    </message>
    <message>
        <source>Afrikaans</source>
        <translation>Afrikaans</translation>
    </message>
    <message>
        <source>Albanian</source>
        <translation>Albanisch</translation>
    </message>
    <message>
        <source>Armenian</source>
        <translation>Armenisch</translation>
    </message>
    <message>
        <source>Bangla</source>
        <translation>Bengalisch</translation>
    </message>
    <message>
        <source>Basque</source>
        <translation>Baskisch</translation>
    </message>
    <message>
        <source>Belarusian</source>
        <translation>Belarussisch</translation>
    </message>
    <message>
        <source>Bosnian</source>
        <translation>Bosnisch</translation>
    </message>
    <message>
        <source>Cantonese</source>
        <translation>Kantonesisch</translation>
    </message>
    <message>
        <source>Filipino</source>
        <translation>Filipino</translation>
    </message>
    <message>
        <source>Galician</source>
        <translation>Galicisch</translation>
    </message>
    <message>
        <source>Georgian</source>
        <translation>Georgisch</translation>
    </message>
    <message>
        <source>Gujarati</source>
        <translation>Gujarati</translation>
    </message>
    <message>
        <source>Irish</source>
        <translation>Irisch</translation>
    </message>
    <message>
        <source>Kannada</source>
        <translation>Kannada</translation>
    </message>
    <message>
        <source>Kazakh</source>
        <translation>Kasachisch</translation>
    </message>
    <message>
        <source>Khmer</source>
        <translation>Khmer</translation>
    </message>
    <message>
        <source>Latin</source>
        <translation>Latein</translation>
    </message>
    <message>
        <source>Macedonian</source>
        <translation>Mazedonisch</translation>
    </message>
    <message>
        <source>Malayalam</source>
        <translation>Malayalam</translation>
    </message>
    <message>
        <source>Marathi</source>
        <translation>Marathi</translation>
    </message>
    <message>
        <source>Mongolian</source>
        <translation>Mongolisch</translation>
    </message>
    <message>
        <source>Norwegian Nynorsk</source>
        <translation>Norwegisch (Nynorsk)</translation>
    </message>
    <message>
        <source>Punjabi</source>
        <translation>Punjabi</translation>
    </message>
    <message>
        <source>Sinhala</source>
        <translation>Singhalesisch</translation>
    </message>
    <message>
        <source>Swahili</source>
        <translation>Swahili</translation>
    </message>
    <message>
        <source>Welsh</source>
        <translation>Walisisch</translation>
    </message>
    <message>
        <source>Yiddish</source>
        <translation>Jiddisch</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Idle</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Open Disc ISO</source>
        <translation>Disc-ISO öffnen</translation>
    </message>
    <message>
        <source>Open Disc Directory</source>
        <translation>Disc-Verzeichnis öffnen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>Titles</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Configurations</source>
        <translation>Konfigurationen</translation>
    </message>
    <message>
        <source>Blu-ray Access Monitor</source>
        <translation>Blu-ray-Zugriffsmonitor</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>API Key</source>
        <translation>API-Schlüssel</translation>
    </message>
    <message>
        <source>Configuration Library</source>
        <translation>Konfigurationsbibliothek</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Info</translation>
    </message>
    <message>
        <source>Refreshing Configurations</source>
        <translation>Konfigurationen werden aktualisiert</translation>
    </message>
    <message>
        <source>Downloading configurations from Tessera</source>
        <translation>Konfigurationen werden von Tessera geladen</translation>
    </message>
    <message>
        <source>Invalid Directory</source>
        <translation>Ungültiges Verzeichnis</translation>
    </message>
    <message>
        <source>The selected directory does not exist.</source>
        <translation>Das gewählte Verzeichnis gibt es nicht.</translation>
    </message>
    <message>
        <source>Disc Images (*.iso);;All Files (*)</source>
        <translation>Disc-Abbilder (*.iso);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Add disc to Tessera?</source>
        <translation>Disc zu Tessera hinzufügen?</translation>
    </message>
    <message>
        <source>This disc is not in Tessera. Do you want to add its technical signature? If you don&apos;t add it, you won&apos;t be able to create a configuration for this disc.</source>
        <translation>Diese Disc ist nicht in Tessera. Soll ihre technische Signatur hinzugefügt werden? Ohne sie können Sie für diese Disc keine Konfiguration anlegen.</translation>
    </message>
    <message>
        <source>Tessera Error</source>
        <translation>Tessera-Fehler</translation>
    </message>
    <message>
        <source>Tessera Message</source>
        <translation>Meldung von Tessera</translation>
    </message>
    <message>
        <source>Loading Disc Data</source>
        <translation>Disc-Daten werden geladen</translation>
    </message>
    <message>
        <source>Scanning disc data and contacting Tessera</source>
        <translation>Die Disc wird gelesen und Tessera befragt</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Platterscope helps you explore the technical makeup of DVD and Blu-ray discs. Open a disc ISO or directory to review its titles, configurations, and Blu-ray access activity.</source>
        <translation>Platterscope zeigt, wie DVDs und Blu-rays technisch aufgebaut sind. Öffnen Sie ein Disc-ISO oder ein Verzeichnis, um Titel, Konfigurationen und Blu-ray-Zugriffe zu sehen.</translation>
    </message>
    <message>
        <source>Technical disc-signature lookups are powered by Vantor&apos;s Tessera.</source>
        <translation>Technische Disc-Signaturen werden in Vantors Tessera nachgeschlagen.</translation>
    </message>
    <message>
        <source>Platterscope uses Qt under the GNU Lesser General Public License version 3.</source>
        <translation>Platterscope verwendet Qt unter der GNU Lesser General Public License, Version 3.</translation>
    </message>
    <message>
        <source>Third-party notices, license texts, and Qt source information are included with this application.</source>
        <translation>Hinweise auf Bestandteile Dritter, Lizenztexte und Angaben zum Quelltext von Qt liegen dem Programm bei.</translation>
    </message>
    <message>
        <source>About Platterscope</source>
        <translation>Info über Platterscope</translation>
    </message>
    <message>
        <source>Platterscope</source>
        <translation>Platterscope</translation>
    </message>
    <message>
        <source>Open Third-Party Notices</source>
        <translation>Hinweise zu Bestandteilen Dritter öffnen</translation>
    </message>
    <message>
        <source>Third-Party Notices</source>
        <translation>Hinweise zu Bestandteilen Dritter</translation>
    </message>
    <message>
        <source>The third-party notices file could not be opened:
%1</source>
        <translation>Die Datei mit den Hinweisen zu Bestandteilen Dritter konnte nicht geöffnet werden:
%1</translation>
    </message>
    <message>
        <source>The Configuration Library documentation describes the technical disc configuration data available through Platterscope and Vantor&apos;s Tessera.</source>
        <translation>Das Handbuch der Konfigurationsbibliothek beschreibt die technischen Konfigurationsdaten, die Platterscope und Vantors Tessera zu Discs bieten.</translation>
    </message>
    <message>
        <source>Vantor and Platterscope are intended solely for lawful personal, archival, and technical use of media you are authorized to access. Vantor does not endorse, encourage, facilitate, or condone piracy, copyright infringement, or the unauthorized copying, distribution, or access of protected content. You are responsible for ensuring that your use complies with applicable laws and the rights of copyright holders.</source>
        <translation>Vantor und Platterscope sind allein für die rechtmäßige persönliche, archivarische und technische Nutzung von Medien gedacht, auf die Sie zugreifen dürfen. Vantor billigt, fördert, erleichtert und duldet keine Piraterie, keine Urheberrechtsverletzung und kein unbefugtes Kopieren, Verbreiten oder Öffnen geschützter Inhalte. Sie sind selbst dafür verantwortlich, dass Ihre Nutzung den geltenden Gesetzen und den Rechten der Rechteinhaber entspricht.</translation>
    </message>
    <message>
        <source>Open Documentation</source>
        <translation>Handbuch öffnen</translation>
    </message>
    <message>
        <source>Configuration Library Documentation</source>
        <translation>Handbuch der Konfigurationsbibliothek</translation>
    </message>
    <message>
        <source>The configuration library documentation could not be opened:
%1</source>
        <translation>Das Handbuch der Konfigurationsbibliothek konnte nicht geöffnet werden:
%1</translation>
    </message>
    <message>
        <source>Tessera Service Address</source>
        <translation>Adresse des Tessera-Dienstes</translation>
    </message>
    <message>
        <source>API Key Security</source>
        <translation>Sicherheit des API-Schlüssels</translation>
    </message>
    <message>
        <source>Vantor API Key</source>
        <translation>Vantor-API-Schlüssel</translation>
    </message>
    <message>
        <source>Enter your Vantor API key:</source>
        <translation>Geben Sie Ihren Vantor-API-Schlüssel ein:</translation>
    </message>
    <message>
        <source>Tessera Authentication Failed</source>
        <translation>Anmeldung bei Tessera fehlgeschlagen</translation>
    </message>
    <message>
        <source>The API key contains characters that are not allowed.</source>
        <translation>Der API-Schlüssel enthält Zeichen, die nicht erlaubt sind.</translation>
    </message>
    <message>
        <source>Connecting to Tessera</source>
        <translation>Verbindung mit Tessera</translation>
    </message>
    <message>
        <source>Authenticating with Tessera</source>
        <translation>Anmeldung bei Tessera läuft</translation>
    </message>
    <message>
        <source>Platterscope Update Available</source>
        <translation>Neue Version von Platterscope</translation>
    </message>
    <message>
        <source>A new version of Platterscope is available for download.

Current version: %1
Available version: %2</source>
        <translation>Eine neue Version von Platterscope steht zum Herunterladen bereit.

Diese Version: %1
Neue Version: %2</translation>
    </message>
    <message>
        <source>No Disc</source>
        <translation>Keine Disc</translation>
    </message>
    <message>
        <source>Please open a disc ISO or directory first.</source>
        <translation>Bitte öffnen Sie zuerst ein Disc-ISO oder ein Verzeichnis.</translation>
    </message>
    <message>
        <source>Blu-ray Disc Required</source>
        <translation>Blu-ray erforderlich</translation>
    </message>
    <message>
        <source>The Blu-ray Access Monitor is only available for Blu-ray discs.</source>
        <translation>Den Blu-ray-Zugriffsmonitor gibt es nur für Blu-rays.</translation>
    </message>
    <message>
        <source>No Path</source>
        <translation>Kein Pfad</translation>
    </message>
    <message>
        <source>Current disc path is empty.</source>
        <translation>Der Pfad der Disc ist leer.</translation>
    </message>
    <message>
        <source>Monitoring: %1</source>
        <translation>Überwacht wird: %1</translation>
    </message>
    <message>
        <source>Error: %1</source>
        <translation>Fehler: %1</translation>
    </message>
    <message>
        <source>Access Monitor Error</source>
        <translation>Fehler des Zugriffsmonitors</translation>
    </message>
    <message>
        <source>Blu-ray: %1</source>
        <translation>Blu-ray: %1</translation>
    </message>
    <message>
        <source>DVD: %1</source>
        <translation>DVD: %1</translation>
    </message>
    <message>
        <source>Platterscope - %1</source>
        <translation>Platterscope - %1</translation>
    </message>
    <message>
        <source>Disc Read Error</source>
        <translation>Fehler beim Lesen der Disc</translation>
    </message>
</context>
<context>
    <name>Messages</name>
    <message>
        <source>Some file events were lost; monitoring has stopped.</source>
        <translation>Einige Dateiereignisse gingen verloren; die Überwachung wurde beendet.</translation>
    </message>
    <message>
        <source>The monitored disc was removed.</source>
        <translation>Die überwachte Disc wurde entfernt.</translation>
    </message>
    <message>
        <source>The system&apos;s limit of watched directories is reached.</source>
        <translation>Das System lässt keine weiteren überwachten Verzeichnisse zu.</translation>
    </message>
    <message>
        <source>Unable to create the Windows ETW helper pipe (error %1).</source>
        <translation>Die Pipe des Windows-ETW-Helfers konnte nicht angelegt werden (Fehler %1).</translation>
    </message>
    <message>
        <source>Unable to create the Windows ETW stop event (error %1).</source>
        <translation>Das Stopp-Ereignis für Windows-ETW konnte nicht angelegt werden (Fehler %1).</translation>
    </message>
    <message>
        <source>The Windows ETW helper was not installed beside Platterscope.</source>
        <translation>Der Windows-ETW-Helfer ist nicht neben Platterscope installiert.</translation>
    </message>
    <message>
        <source>Windows access monitoring needs administrator permission (error %1).</source>
        <translation>Die Zugriffsüberwachung unter Windows braucht Administratorrechte (Fehler %1).</translation>
    </message>
    <message>
        <source>The elevated Windows ETW helper did not connect (error %1).</source>
        <translation>Der Windows-ETW-Helfer mit erhöhten Rechten hat sich nicht verbunden (Fehler %1).</translation>
    </message>
    <message>
        <source>The Windows ETW helper sent an invalid message.</source>
        <translation>Der Windows-ETW-Helfer sandte eine ungültige Nachricht.</translation>
    </message>
    <message>
        <source>The Windows ETW helper sent an unknown message.</source>
        <translation>Der Windows-ETW-Helfer sandte eine unbekannte Nachricht.</translation>
    </message>
    <message>
        <source>The Windows ETW helper failed.</source>
        <translation>Der Windows-ETW-Helfer ist gescheitert.</translation>
    </message>
    <message>
        <source>The elevated Windows ETW helper stopped unexpectedly.</source>
        <translation>Der Windows-ETW-Helfer mit erhöhten Rechten endete unerwartet.</translation>
    </message>
    <message>
        <source>Unable to monitor the selected disc directory.</source>
        <translation>Das gewählte Disc-Verzeichnis kann nicht überwacht werden.</translation>
    </message>
    <message>
        <source>Blu-ray scan metadata is unavailable.</source>
        <translation>Die Daten der Blu-ray wurden nicht gelesen.</translation>
    </message>
    <message>
        <source>Failed to scan Blu-ray structure.</source>
        <translation>Der Aufbau der Blu-ray konnte nicht gelesen werden.</translation>
    </message>
    <message>
        <source>No titles found on Blu-ray.</source>
        <translation>Auf der Blu-ray wurden keine Titel gefunden.</translation>
    </message>
    <message>
        <source>Failed to build Blu-ray title package.</source>
        <translation>Das Titelpaket der Blu-ray konnte nicht gebildet werden.</translation>
    </message>
    <message>
        <source>This disc has not been added to Tessera.</source>
        <translation>Diese Disc wurde noch nicht zu Tessera hinzugefügt.</translation>
    </message>
    <message>
        <source>The disc type is not supported by Tessera.</source>
        <translation>Diese Art von Disc kennt Tessera nicht.</translation>
    </message>
    <message>
        <source>Unable to refresh Tessera configurations.</source>
        <translation>Die Konfigurationen konnten nicht von Tessera geladen werden.</translation>
    </message>
    <message>
        <source>Error querying Tessera for DVD.</source>
        <translation>Tessera konnte nicht nach der DVD gefragt werden.</translation>
    </message>
    <message>
        <source>Failed to add DVD to database.</source>
        <translation>Die DVD konnte nicht hinzugefügt werden.</translation>
    </message>
    <message>
        <source>Error querying Tessera for Blu-ray.</source>
        <translation>Tessera konnte nicht nach der Blu-ray gefragt werden.</translation>
    </message>
    <message>
        <source>Failed to add Blu-ray to database.</source>
        <translation>Die Blu-ray konnte nicht hinzugefügt werden.</translation>
    </message>
    <message>
        <source>Path is not a valid Blu-ray or DVD.</source>
        <translation>Der Pfad ist keine gültige Blu-ray oder DVD.</translation>
    </message>
    <message>
        <source>There is not enough memory to read the disc.</source>
        <translation>Der Speicher reicht nicht aus, um die Disc zu lesen.</translation>
    </message>
    <message>
        <source>DVD scan metadata is unavailable.</source>
        <translation>Die Daten der DVD wurden nicht gelesen.</translation>
    </message>
    <message>
        <source>No titles found on DVD.</source>
        <translation>Auf der DVD wurden keine Titel gefunden.</translation>
    </message>
    <message>
        <source>Failed to build DVD title package.</source>
        <translation>Das Titelpaket der DVD konnte nicht gebildet werden.</translation>
    </message>
    <message>
        <source>No API key output was provided.</source>
        <translation>Für den API-Schlüssel wurde kein Ziel angegeben.</translation>
    </message>
    <message>
        <source>Failed to read API key file: %1</source>
        <translation>Die Datei des API-Schlüssels konnte nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>Failed to write API key file: %1</source>
        <translation>Die Datei des API-Schlüssels konnte nicht geschrieben werden: %1</translation>
    </message>
    <message>
        <source>Failed to create configuration directory: %1</source>
        <translation>Das Konfigurationsverzeichnis konnte nicht angelegt werden: %1</translation>
    </message>
    <message>
        <source>Could not read the API key file owner (error %1).</source>
        <translation>Der Eigentümer der Datei des API-Schlüssels konnte nicht bestimmt werden (Fehler %1).</translation>
    </message>
    <message>
        <source>Could not read the API key file owner (Windows error %1).</source>
        <translation>Der Eigentümer der Datei des API-Schlüssels konnte nicht bestimmt werden (Windows-Fehler %1).</translation>
    </message>
    <message>
        <source>Could not restrict the API key file to its owner (error %1).</source>
        <translation>Die Datei des API-Schlüssels konnte nicht auf ihren Eigentümer beschränkt werden (Fehler %1).</translation>
    </message>
    <message>
        <source>Could not restrict the API key file to its owner (Windows error %1).</source>
        <translation>Die Datei des API-Schlüssels konnte nicht auf ihren Eigentümer beschränkt werden (Windows-Fehler %1).</translation>
    </message>
    <message>
        <source>The API key file can be accessed by other users.</source>
        <translation>Andere Benutzer können auf die Datei des API-Schlüssels zugreifen.</translation>
    </message>
    <message>
        <source>Tessera API key is not configured.</source>
        <translation>Es ist kein Tessera-API-Schlüssel eingerichtet.</translation>
    </message>
    <message>
        <source>The API key contains characters that are not allowed.</source>
        <translation>Der API-Schlüssel enthält Zeichen, die nicht erlaubt sind.</translation>
    </message>
    <message>
        <source>Tessera returned an invalid authentication response.</source>
        <translation>Tessera gab auf die Anmeldung eine ungültige Antwort.</translation>
    </message>
    <message>
        <source>Unable to authenticate with Tessera.</source>
        <translation>Die Anmeldung bei Tessera ist nicht möglich.</translation>
    </message>
    <message>
        <source>Tessera returned an invalid configurations response.</source>
        <translation>Tessera gab auf die Frage nach Konfigurationen eine ungültige Antwort.</translation>
    </message>
    <message>
        <source>Tessera title package request is missing required data.</source>
        <translation>Der Anfrage mit dem Titelpaket an Tessera fehlen nötige Angaben.</translation>
    </message>
    <message>
        <source>Unable to compress the title package.</source>
        <translation>Das Titelpaket konnte nicht komprimiert werden.</translation>
    </message>
    <message>
        <source>Unable to prepare the Tessera title package request.</source>
        <translation>Die Anfrage mit dem Titelpaket an Tessera konnte nicht vorbereitet werden.</translation>
    </message>
    <message>
        <source>Tessera returned an invalid find response.</source>
        <translation>Tessera gab auf die Suche eine ungültige Antwort.</translation>
    </message>
    <message>
        <source>Tessera returned an invalid disc identifier.</source>
        <translation>Tessera gab eine ungültige Disc-ID zurück.</translation>
    </message>
    <message>
        <source>Unable to initialize the Tessera network client.</source>
        <translation>Die Netzwerkverbindung zu Tessera konnte nicht eingerichtet werden.</translation>
    </message>
    <message>
        <source>Network error: %1</source>
        <translation>Netzwerkfehler: %1</translation>
    </message>
    <message>
        <source>Tessera returned HTTP %1.</source>
        <translation>Tessera antwortete mit HTTP %1.</translation>
    </message>
    <message>
        <source>Tessera request is missing required data.</source>
        <translation>Der Anfrage an Tessera fehlen nötige Angaben.</translation>
    </message>
    <message>
        <source>Unable to prepare the Tessera authentication request.</source>
        <translation>Die Anmeldung bei Tessera konnte nicht vorbereitet werden.</translation>
    </message>
    <message>
        <source>The Tessera service address is not a valid web address.</source>
        <translation>Die Adresse des Tessera-Dienstes ist keine gültige Webadresse.</translation>
    </message>
    <message>
        <source>The Tessera service address must not hold a user name, a path, a query or a fragment.</source>
        <translation>Die Adresse des Tessera-Dienstes darf weder Benutzernamen noch Pfad, Abfrage oder Fragment enthalten.</translation>
    </message>
    <message>
        <source>The Tessera service address must use https; http is allowed for this computer alone.</source>
        <translation>Die Adresse des Tessera-Dienstes muss https verwenden; http ist nur für diesen Rechner erlaubt.</translation>
    </message>
    <message>
        <source>The disc could not be read: an unexpected error.</source>
        <translation>Die Disc konnte nicht gelesen werden: ein unerwarteter Fehler.</translation>
    </message>
    <message>
        <source>The system has not enough memory or threads left for this.</source>
        <translation>Dem System fehlen dafür Speicher oder Threads.</translation>
    </message>
    <message>
        <source>The device is not mounted. Mount it with this command: udisksctl mount -b %1</source>
        <translation>Das Gerät ist nicht eingehängt. Hängen Sie es mit diesem Befehl ein: udisksctl mount -b %1</translation>
    </message>
    <message>
        <source>Blu-ray package input is incomplete.</source>
        <translation>Die Eingabe für das Blu-ray-Paket ist unvollständig.</translation>
    </message>
    <message>
        <source>A Blu-ray clip information file could not be retained for packaging.</source>
        <translation>Eine Clip-Informationsdatei der Blu-ray konnte für das Paket nicht behalten werden.</translation>
    </message>
    <message>
        <source>A Blu-ray playlist could not be retained for packaging.</source>
        <translation>Eine Playlist der Blu-ray konnte für das Paket nicht behalten werden.</translation>
    </message>
    <message>
        <source>Blu-ray title data does not match its playlist manifest.</source>
        <translation>Die Titeldaten der Blu-ray passen nicht zum Verzeichnis ihrer Playlists.</translation>
    </message>
    <message>
        <source>Blu-ray package requires five-character BDMV identifiers.</source>
        <translation>Das Blu-ray-Paket verlangt BDMV-Kennungen aus fünf Zeichen.</translation>
    </message>
    <message>
        <source>DVD package input is incomplete.</source>
        <translation>Die Eingabe für das DVD-Paket ist unvollständig.</translation>
    </message>
    <message>
        <source>DVD package requires VIDEO_TS.IFO as its first raw file.</source>
        <translation>Das DVD-Paket verlangt VIDEO_TS.IFO als erste Rohdatei.</translation>
    </message>
    <message>
        <source>DVD package contains an invalid raw IFO file.</source>
        <translation>Das DVD-Paket enthält eine ungültige IFO-Rohdatei.</translation>
    </message>
    <message>
        <source>DVD package contains an IFO with an unexpected signature.</source>
        <translation>Das DVD-Paket enthält eine IFO-Datei mit unerwarteter Signatur.</translation>
    </message>
    <message>
        <source>DVD package contains no VTS metadata.</source>
        <translation>Das DVD-Paket enthält keine VTS-Metadaten.</translation>
    </message>
    <message>
        <source>DVD package contains invalid VTS stream metadata.</source>
        <translation>Das DVD-Paket enthält ungültige VTS-Streamdaten.</translation>
    </message>
    <message>
        <source>DVD package contains no title metadata.</source>
        <translation>Das DVD-Paket enthält keine Titeldaten.</translation>
    </message>
    <message>
        <source>DVD title metadata is not in canonical order.</source>
        <translation>Die Titeldaten der DVD stehen nicht in der vorgeschriebenen Reihenfolge.</translation>
    </message>
    <message>
        <source>cannot enumerate BDMV playlist or clip information files</source>
        <translation>Die Playlists oder Clip-Informationsdateien des BDMV lassen sich nicht auflisten</translation>
    </message>
    <message>
        <source>cannot parse playlist &apos;%1&apos;</source>
        <translation>Die Playlist „%1“ lässt sich nicht auswerten</translation>
    </message>
    <message>
        <source>cannot parse clip information &apos;%1&apos;</source>
        <translation>Die Clip-Information „%1“ lässt sich nicht auswerten</translation>
    </message>
    <message>
        <source>more of the disc cannot be read</source>
        <translation>weitere Dateien der Disc lassen sich nicht lesen</translation>
    </message>
    <message>
        <source>path and disc are required</source>
        <translation>Pfad und Disc sind erforderlich</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has no BDMV directory</source>
        <translation>„%1“ hat kein Verzeichnis BDMV</translation>
    </message>
    <message>
        <source>cannot open &apos;%1&apos;: %2</source>
        <translation>„%1“ lässt sich nicht öffnen: %2</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a supported ISO-9660 or UDF image</source>
        <translation>„%1“ ist kein unterstütztes ISO-9660- oder UDF-Image</translation>
    </message>
    <message>
        <source>cannot stat &apos;%1&apos;: %2</source>
        <translation>„%1“ lässt sich nicht abfragen: %2</translation>
    </message>
    <message>
        <source>cannot read &apos;%1&apos;: %2</source>
        <translation>„%1“ lässt sich nicht lesen: %2</translation>
    </message>
    <message>
        <source>cannot read &apos;%1&apos;: its data cannot be read</source>
        <translation>„%1“ lässt sich nicht lesen: die Daten sind nicht lesbar</translation>
    </message>
    <message>
        <source>cannot read &apos;%1&apos;: its file entry cannot be read</source>
        <translation>„%1“ lässt sich nicht lesen: der Dateieintrag ist nicht lesbar</translation>
    </message>
    <message>
        <source>cannot read &apos;%1&apos;: it is no regular file</source>
        <translation>„%1“ lässt sich nicht lesen: es ist keine reguläre Datei</translation>
    </message>
    <message>
        <source>cannot read &apos;%1&apos;: the file lies behind the image&apos;s first 2 GiB; mount the image and open the directory</source>
        <translation>„%1“ lässt sich nicht lesen: die Datei liegt hinter den ersten 2 GiB des Images; hängen Sie das Image ein und öffnen Sie das Verzeichnis</translation>
    </message>
    <message>
        <source>the file lies behind the image&apos;s first 2 GiB; mount the image and open the directory</source>
        <translation>die Datei liegt hinter den ersten 2 GiB des Images; hängen Sie das Image ein und öffnen Sie das Verzeichnis</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has no VIDEO_TS directory</source>
        <translation>„%1“ hat kein Verzeichnis VIDEO_TS</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a supported ISO-9660 image</source>
        <translation>„%1“ ist kein unterstütztes ISO-9660-Image</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has an unsupported ISO block size</source>
        <translation>„%1“ hat eine nicht unterstützte ISO-Blockgröße</translation>
    </message>
    <message>
        <source>ISO image has no VIDEO_TS directory</source>
        <translation>Das ISO-Image hat kein Verzeichnis VIDEO_TS</translation>
    </message>
    <message>
        <source>cannot determine size of &apos;%1&apos;</source>
        <translation>Die Größe von „%1“ lässt sich nicht bestimmen</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is neither a directory nor an ISO image</source>
        <translation>„%1“ ist weder ein Verzeichnis noch ein ISO-Image</translation>
    </message>
    <message>
        <source>ISO image has no VIDEO_TS/%1</source>
        <translation>Das ISO-Image hat kein VIDEO_TS/%1</translation>
    </message>
    <message>
        <source>the navigation files are larger than the image that holds them</source>
        <translation>die Navigationsdateien sind größer als das Image, das sie enthält</translation>
    </message>
    <message>
        <source>the navigation files are larger than 512 MiB</source>
        <translation>die Navigationsdateien sind größer als 512 MiB</translation>
    </message>
    <message>
        <source>the directories and file entries are larger than 32 MiB</source>
        <translation>die Verzeichnisse und Dateieinträge sind größer als 32 MiB</translation>
    </message>
    <message>
        <source>the files are in more than 262,144 pieces</source>
        <translation>die Dateien liegen in mehr als 262.144 Stücken</translation>
    </message>
    <message>
        <source>the playlists and clips have more than 2,000,000 streams</source>
        <translation>die Playlists und Clips haben mehr als 2.000.000 Streams</translation>
    </message>
    <message>
        <source>the searches for entry points take more than 1,000,000,000 steps</source>
        <translation>die Suche nach Einstiegspunkten braucht mehr als 1.000.000.000 Schritte</translation>
    </message>
    <message>
        <source>the disc has more than 250,000 titles and streams to show</source>
        <translation>die Disc hat mehr als 250.000 Titel und Streams</translation>
    </message>
    <message>
        <source>VIDEO_TS.IFO is not a DVD-Video manager IFO</source>
        <translation>VIDEO_TS.IFO ist keine Manager-IFO einer DVD-Video</translation>
    </message>
    <message>
        <source>VIDEO_TS.IFO has no readable title table</source>
        <translation>VIDEO_TS.IFO hat keine lesbare Titeltabelle</translation>
    </message>
    <message>
        <source>VIDEO_TS.IFO has an invalid title table</source>
        <translation>VIDEO_TS.IFO hat eine ungültige Titeltabelle</translation>
    </message>
    <message>
        <source>cannot read title %1</source>
        <translation>Titel %1 lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>DVD has too many or invalid IFO files</source>
        <translation>Die DVD hat zu viele oder ungültige IFO-Dateien</translation>
    </message>
    <message>
        <source>cannot read VIDEO_TS/%1</source>
        <translation>VIDEO_TS/%1 lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>%1 has invalid title PTT data</source>
        <translation>%1 hat ungültige PTT-Daten eines Titels</translation>
    </message>
    <message>
        <source>cannot read PTT table in %1</source>
        <translation>Die PTT-Tabelle in %1 lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>%1 has malformed PTT offsets</source>
        <translation>%1 hat fehlerhafte PTT-Adressen</translation>
    </message>
    <message>
        <source>%1 has invalid PGC data</source>
        <translation>%1 hat ungültige PGC-Daten</translation>
    </message>
    <message>
        <source>cannot read title PGC in %1</source>
        <translation>Die PGC eines Titels in %1 lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>%1 has invalid cell playback data</source>
        <translation>%1 hat ungültige Zellendaten</translation>
    </message>
    <message>
        <source>%1 has an invalid title start program</source>
        <translation>%1 hat ein ungültiges Startprogramm eines Titels</translation>
    </message>
    <message>
        <source>cannot read cell playback data in %1</source>
        <translation>Die Zellendaten in %1 lassen sich nicht lesen</translation>
    </message>
    <message>
        <source>%1 is not a valid VTS IFO</source>
        <translation>%1 ist keine gültige VTS-IFO</translation>
    </message>
    <message>
        <source>%1 has missing title tables</source>
        <translation>In %1 fehlen Titeltabellen</translation>
    </message>
    <message>
        <source>%1 has an invalid declared stream count</source>
        <translation>%1 gibt eine ungültige Anzahl von Streams an</translation>
    </message>
    <message>
        <source>cannot read first PTT in %1</source>
        <translation>Der erste PTT in %1 lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>DVD has invalid VTS metadata</source>
        <translation>Die DVD hat ungültige VTS-Metadaten</translation>
    </message>
</context>
<context>
    <name>MonitorPage</name>
    <message>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Clear All</source>
        <translation>Alles leeren</translation>
    </message>
    <message>
        <source>Blu-ray Access Monitor</source>
        <translation>Blu-ray-Zugriffsmonitor</translation>
    </message>
    <message>
        <source>Open/Close Events</source>
        <translation>Ereignisse (Öffnen/Schließen)</translation>
    </message>
    <message>
        <source>Currently Open Files</source>
        <translation>Gerade offene Dateien</translation>
    </message>
    <message>
        <source>Playlists (.mpls)</source>
        <translation>Playlists (.mpls)</translation>
    </message>
    <message>
        <source>Segments (.m2ts)</source>
        <translation>Segmente (.m2ts)</translation>
    </message>
</context>
<context>
    <name>PlaceholderPage</name>
    <message>
        <source>Enter My API Key</source>
        <translation>Meinen API-Schlüssel eingeben</translation>
    </message>
    <message>
        <source>Please Open A Disc</source>
        <translation>Bitte öffnen Sie eine Disc</translation>
    </message>
    <message>
        <source>Tessera API key is required.
Please enter your API key to continue.</source>
        <translation>Ein Tessera-API-Schlüssel ist erforderlich.
Bitte geben Sie Ihren API-Schlüssel ein, um fortzufahren.</translation>
    </message>
</context>
<context>
    <name>RowView</name>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
</context>
<context>
    <name>TextReport</name>
    <message>
        <source>Volume identifier: %1
</source>
        <translation>Datenträgername: %1
</translation>
    </message>
    <message>
        <source>Disc identifier: %1
</source>
        <translation>Disc-Kennung: %1
</translation>
    </message>
    <message>
        <source>Organization identifier: %1
</source>
        <translation>Organisationskennung: %1
</translation>
    </message>
    <message>
        <source>Index version: %1
</source>
        <translation>Indexversion: %1
</translation>
    </message>
    <message>
        <source>Titles in the index: %1
</source>
        <translation>Titel im Index: %1
</translation>
    </message>
    <message>
        <source>Provider: %1
</source>
        <translation>Anbieter: %1
</translation>
    </message>
    <message>
        <source>Titles: %1
</source>
        <translation>Titel: %1
</translation>
    </message>
    <message>
        <source>Total duration: %1
</source>
        <translation>Gesamtdauer: %1
</translation>
    </message>
    <message>
        <source>Total playback size (angle 1): %1 bytes
</source>
        <translation>Gesamte Abspielgröße (Blickwinkel 1): %1 Bytes
</translation>
    </message>
    <message>
        <source>Total chapters: %1
</source>
        <translation>Kapitel insgesamt: %1
</translation>
    </message>
    <message>
        <source>Disc: %1
</source>
        <translation>Disc: %1
</translation>
    </message>
    <message>
        <source>DVD</source>
        <translation>DVD</translation>
    </message>
    <message>
        <source>Blu-ray</source>
        <translation>Blu-ray</translation>
    </message>
    <message>
        <source>Path: %1
</source>
        <translation>Pfad: %1
</translation>
    </message>
    <message>
        <source>Package SHA-256: %1
</source>
        <translation>SHA-256 des Pakets: %1
</translation>
    </message>
</context>
<context>
    <name>TitleText</name>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>Primary</source>
        <translation>Primär</translation>
    </message>
    <message>
        <source>Secondary</source>
        <translation>Sekundär</translation>
    </message>
    <message>
        <source>Dolby Vision enhancement</source>
        <translation>Dolby-Vision-Erweiterung</translation>
    </message>
    <message>
        <source>Unknown (0x%1)</source>
        <translation>Unbekannt (0x%1)</translation>
    </message>
    <message>
        <source>%n Hour</source>
        <translation>%n Std.</translation>
    </message>
    <message>
        <source>%n Minute</source>
        <translation>%n Min.</translation>
    </message>
    <message>
        <source>%n Second</source>
        <translation>%n Sek.</translation>
    </message>
    <message>
        <source>%1 Chapters, %2</source>
        <translation>%1 Kapitel, %2</translation>
    </message>
    <message>
        <source>%1x%2</source>
        <translation>%1x%2</translation>
    </message>
    <message>
        <source>Playback size (angle 1, estimated): %1 bytes
</source>
        <translation>Abspielgröße (Blickwinkel 1, geschätzt): %1 Bytes
</translation>
    </message>
    <message>
        <source>Playback size (angle 1): %1 bytes
</source>
        <translation>Abspielgröße (Blickwinkel 1): %1 Bytes
</translation>
    </message>
    <message>
        <source>Resolution: %1x%2
</source>
        <translation>Auflösung: %1x%2
</translation>
    </message>
    <message>
        <source>Video codec: %1
</source>
        <translation>Videocodec: %1
</translation>
    </message>
    <message>
        <source>Duration: %1
</source>
        <translation>Dauer: %1
</translation>
    </message>
    <message>
        <source>Chapters: %1
</source>
        <translation>Kapitel: %1
</translation>
    </message>
    <message>
        <source>Angles: %1
</source>
        <translation>Blickwinkel: %1
</translation>
    </message>
    <message>
        <source>Audio tracks: %1
</source>
        <translation>Tonspuren: %1
</translation>
    </message>
    <message>
        <source>Subtitle tracks: %1
</source>
        <translation>Untertitelspuren: %1
</translation>
    </message>
    <message>
        <source>Playback size (angle 1, approx): %1 bytes
</source>
        <translation>Abspielgröße (Blickwinkel 1, ungefähr): %1 Bytes
</translation>
    </message>
    <message>
        <source>Playlist ID: %1
</source>
        <translation>Playlist-ID: %1
</translation>
    </message>
    <message>
        <source>Clips: %1
</source>
        <translation>Clips: %1
</translation>
    </message>
    <message>
        <source>Alternate-angle PlayItems: %1
</source>
        <translation>PlayItems mit mehreren Blickwinkeln: %1
</translation>
    </message>
    <message>
        <source>Playmarks: %1
</source>
        <translation>Playmarks: %1
</translation>
    </message>
    <message>
        <source>Video streams: %1
</source>
        <translation>Videostreams: %1
</translation>
    </message>
    <message>
        <source>Video codecs: %1
</source>
        <translation>Videocodecs: %1
</translation>
    </message>
    <message>
        <source>Primary audio tracks: %1
</source>
        <translation>Primäre Tonspuren: %1
</translation>
    </message>
    <message>
        <source>Primary subtitle tracks: %1
</source>
        <translation>Primäre Untertitelspuren: %1
</translation>
    </message>
    <message>
        <source>IG (menu) streams: %1
</source>
        <translation>IG-Streams (Menüs): %1
</translation>
    </message>
    <message>
        <source>Secondary video: %1
</source>
        <translation>Sekundäres Video: %1
</translation>
    </message>
    <message>
        <source>Title number: %1
</source>
        <translation>Titelnummer: %1
</translation>
    </message>
    <message>
        <source>Segment map (clip IDs):
</source>
        <translation>Segmentfolge (Clip-IDs):
</translation>
    </message>
    <message>
        <source>Title Number: %1
</source>
        <translation>Titelnummer: %1
</translation>
    </message>
    <message>
        <source>Segment map (clip IDs): %1
</source>
        <translation>Segmentfolge (Clip-IDs): %1
</translation>
    </message>
    <message>
        <source>Codec: %1
</source>
        <translation>Codec: %1
</translation>
    </message>
    <message>
        <source>Role: %1
</source>
        <translation>Rolle: %1
</translation>
    </message>
    <message>
        <source>PID: %1
</source>
        <translation>PID: %1
</translation>
    </message>
    <message>
        <source>Language: %1
</source>
        <translation>Sprache: %1
</translation>
    </message>
    <message>
        <source>Channel layout: %1
</source>
        <translation>Kanalanordnung: %1
</translation>
    </message>
    <message>
        <source>Sample rate: %1
</source>
        <translation>Abtastrate: %1
</translation>
    </message>
    <message>
        <source>Format: %1
</source>
        <translation>Format: %1
</translation>
    </message>
    <message>
        <source>Character encoding: %1
</source>
        <translation>Zeichenkodierung: %1
</translation>
    </message>
    <message>
        <source>PID 0x%1 (%2)</source>
        <translation>PID 0x%1 (%2)</translation>
    </message>
    <message>
        <source>stream ID 0x%1 (%2)</source>
        <translation>Stream-ID 0x%1 (%2)</translation>
    </message>
    <message>
        <source>%1 (%2 angles)</source>
        <translation>%1 (%2 Blickwinkel)</translation>
    </message>
    <message>
        <source>Video track</source>
        <translation>Videospur</translation>
    </message>
    <message>
        <source>Audio track</source>
        <translation>Tonspur</translation>
    </message>
    <message>
        <source>Subtitle track</source>
        <translation>Untertitelspur</translation>
    </message>
</context>
<context>
    <name>TitlesPage</name>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Video</source>
        <translation>Video</translation>
    </message>
    <message>
        <source>Audio</source>
        <translation>Ton</translation>
    </message>
    <message>
        <source>Subtitle</source>
        <translation>Untertitel</translation>
    </message>
    <message>
        <source>Titles and streams of the disc</source>
        <translation>Titel und Streams der Disc</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Details of the selected title or stream</source>
        <translation>Details des gewählten Titels oder Streams</translation>
    </message>
    <message>
        <source>Copy Details</source>
        <translation>Details kopieren</translation>
    </message>
    <message>
        <source>Copy Signature</source>
        <translation>Signatur kopieren</translation>
    </message>
</context>
</TS>

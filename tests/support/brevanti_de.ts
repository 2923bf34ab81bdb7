<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>PermissionCard</name>
    <message>
        <source>Stay Up To Date</source>
        <translation>Bleib auf dem Laufenden</translation>
    </message>
    <message>
        <source>Customize Notifications</source>
        <translation>Mitteilungen anpassen</translation>
    </message>
</context>
<context>
    <name>PreferencesPage</name>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
</context>
</TS>

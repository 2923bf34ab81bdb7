<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>NavigationBar</name>
    <message>
        <source>Back</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PermissionCard</name>
    <message>
        <source>Keep Me Updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Customize Notifications</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No Thanks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stay Up To Date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn on notifications to make sure you don&apos;t miss anything you care about!</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PreferencesPage</name>
    <message>
        <source>Notifications</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The notification settings could not be loaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There are no notification settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>

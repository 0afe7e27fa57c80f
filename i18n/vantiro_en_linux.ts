<?xml version="1.0" encoding="utf-8"?>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<!DOCTYPE TS>
<TS version="2.1" language="en_linux" sourcelanguage="en">
<context>
    <name>AfterTake</name>
    <message>
        <source>it did not reach Music. Use Add to Music in the takes list to try again.</source>
        <translation>it did not reach your music library. Use Add to your music library in the takes list to try again.</translation>
    </message>
</context>
<context>
    <name>AnalysisText</name>
    <message numerus="yes">
        <source>%1 places, %2 an hour, %3 in all</source>
        <translation>
            <numerusform>%1 place, %2 an hour, %3 in all</numerusform>
            <numerusform>%1 places, %2 an hour, %3 in all</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 in %2 silences</source>
        <translation>
            <numerusform>%1 in %2 silence</numerusform>
            <numerusform>%1 in %2 silences</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>CopyWords</name>
    <message>
        <source>cannot convert to %1 on this Mac</source>
        <translation>cannot convert to %1 on this computer</translation>
    </message>
</context>
<context>
    <name>DeckPlayback</name>
    <message>
        <source>Vantiro cannot play %1. Show it in Finder and open it in another player: the file may still be fine.</source>
        <translation>Vantiro cannot play %1. Show it in the file manager and open it in another player: the file may still be fine.</translation>
    </message>
</context>
<context>
    <name>EndingWords</name>
    <message numerus="yes">
        <source>The take has %n gaps, for example where the Mac slept. The rest of the file is intact.</source>
        <translation>
            <numerusform>The take has %n gap, for example where the computer slept. The rest of the file is intact.</numerusform>
            <numerusform>The take has %n gaps, for example where the computer slept. The rest of the file is intact.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ErrorWords</name>
    <message>
        <source>this Mac is offline</source>
        <translation>this computer is offline</translation>
    </message>
</context>
<context>
    <name>Figures</name>
    <message numerus="yes">
        <source>%1 frames</source>
        <translation>
            <numerusform>%1 frame</numerusform>
            <numerusform>%1 frames</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 blocks</source>
        <translation>
            <numerusform>%1 block</numerusform>
            <numerusform>%1 blocks</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 frames in %2 gaps</source>
        <translation>
            <numerusform>%1 frames in %2 gap</numerusform>
            <numerusform>%1 frames in %2 gaps</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>LoginFlow</name>
    <message>
        <source>Move Vantiro to Applications first, then turn on Open at Login.</source>
        <translation>Move Vantiro to a folder where it stays first, then turn on Open at Login.</translation>
    </message>
    <message>
        <source>macOS did not change the login item: %1</source>
        <translation>The desktop did not change what starts at login: %1</translation>
    </message>
</context>
<context>
    <name>MusicInbox</name>
    <message>
        <source>There is no Automatically Add to Music folder in %1. In Music, Settings, Files shows where Music keeps its media folder.</source>
        <translation>Vantiro cannot write to %1. Choose a folder that your music library watches, and that you can write to.</translation>
    </message>
    <message>
        <source>Music&apos;s Automatically Add to Music folder is missing</source>
        <translation>the folder that your music library watches is missing. Choose it in Settings.</translation>
    </message>
</context>
<context>
    <name>PracticeText</name>
    <message numerus="yes">
        <source>Added %1 takes to the log</source>
        <translation>
            <numerusform>Added %1 take to the log</numerusform>
            <numerusform>Added %1 takes to the log</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>No sets this week or last. The log holds %1 sets, the last of %2.</source>
        <translation>
            <numerusform>No sets this week or last. The log holds %1 set, of %2.</numerusform>
            <numerusform>No sets this week or last. The log holds %1 sets, the last of %2.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Preflight</name>
    <message>
        <source>Play a track in %1. If one is playing, allow Vantiro in System Settings, Privacy and Security, System Audio Recording.</source>
        <translation>Play a track in %1. If one is playing, make sure that %1 is not muted in your sound settings, and that an output is chosen in its own audio settings.</translation>
    </message>
    <message>
        <source>Set %1 to 44,100 or 48,000 Hz in Audio MIDI Setup.</source>
        <translation>Set the clock rate of PipeWire to 44,100 or 48,000 Hz. If %1 stays below that, choose another profile for the device in your sound settings.</translation>
    </message>
    <message numerus="yes">
        <source>%n minutes of recording fit. Free some space first.</source>
        <translation>
            <numerusform>%n minute of recording fits. Free some space first.</numerusform>
            <numerusform>%n minutes of recording fit. Free some space first.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 hours of recording free</source>
        <translation>
            <numerusform>%1 hour of recording free</numerusform>
            <numerusform>%1 hours of recording free</numerusform>
        </translation>
    </message>
    <message>
        <source>Connect an audio interface or a controller, or start a DJ app on this Mac. The setup guide shows what goes where.</source>
        <translation>Connect an audio interface or a controller, or start a DJ app on this computer. The setup guide shows what goes where.</translation>
    </message>
    <message>
        <source>macOS treats every audio input as a microphone. Allow Vantiro in System Settings, Privacy and Security, Microphone. If the meter stays empty after that, quit and reopen Vantiro.</source>
        <translation>Your desktop treats every audio input as a microphone, and keeps Vantiro from them. Allow Vantiro to use the microphone on the privacy page of your desktop&apos;s settings. If the meter stays empty after that, quit and reopen Vantiro.</translation>
    </message>
</context>
<context>
    <name>SettingsPane</name>
    <message>
        <source>Show in Finder</source>
        <translation>Show in Files</translation>
    </message>
    <message>
        <source>When a take ends, Finder opens with the file selected.</source>
        <translation>When a take ends, the file manager opens with the file selected.</translation>
    </message>
    <message>
        <source>Show each take in Finder</source>
        <translation>Show each take in the file manager</translation>
    </message>
    <message>
        <source>Control Option Command R starts and stops a take while your DJ app is in front.</source>
        <translation>Ctrl+Alt+Super+R starts and stops a take while your DJ app is in front.</translation>
    </message>
    <message>
        <source>A click in this window asks first. The hotkey and the menu bar stop at once.</source>
        <translation>A click in this window asks first. The hotkey and the tray stop at once.</translation>
    </message>
    <message>
        <source>For Shortcuts, a Stream Deck or a script: vantiro://record, stop, toggle, play. Off by default, because a web page can open such a link too.</source>
        <translation>For a launcher, a Stream Deck or a script: vantiro://record, stop, toggle, play. Off by default, because a web page can open such a link too.</translation>
    </message>
    <message>
        <source>Show in the menu bar</source>
        <translation>Show in the tray</translation>
    </message>
    <message>
        <source>Vantiro starts with your Mac.</source>
        <translation>Vantiro starts when you log in.</translation>
    </message>
</context>
<context>
    <name>ShapeText</name>
    <message numerus="yes">
        <source>Clipped in %n places, %1 samples at full scale</source>
        <translation>
            <numerusform>Clipped in %n place, %1 samples at full scale</numerusform>
            <numerusform>Clipped in %n places, %1 samples at full scale</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SourceRanker</name>
    <message>
        <source>playing on this Mac</source>
        <translation>playing on this computer</translation>
    </message>
</context>
<context>
    <name>TakesText</name>
    <message numerus="yes">
        <source>%1 takes, %2 in all, %3, in %4</source>
        <translation>
            <numerusform>%1 take, %2 in all, %3, in %4</numerusform>
            <numerusform>%1 takes, %2 in all, %3, in %4</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>TopStrip</name>
    <message>
        <source>Show the takes folder in Finder</source>
        <translation>Show the takes folder in the file manager</translation>
    </message>
    <message>
        <source>FINDER</source>
        <translation>FOLDER</translation>
    </message>
</context>
<context>
    <name>vantiro::Desk</name>
    <message>
        <source>Stop and save the take (⌃⌥⌘R)</source>
        <translation>Stop and save the take (Ctrl+Alt+Super+R)</translation>
    </message>
    <message>
        <source>Record (⌃⌥⌘R)</source>
        <translation>Record (Ctrl+Alt+Super+R)</translation>
    </message>
</context>
</TS>

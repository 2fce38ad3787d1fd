// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property SettingsModel model
    readonly property BoostModel boost: model.boost

    Section {
        header: qsTr("Boost these apps")
        footer: qsTr("When one of these is in front, everything else moves to the background. Add anything: an editor, a design tool, a game.")

        AppList {
            title: qsTr("Boost these apps")
            apps: pane.boost.userGames
            picker: pane.model.picker
            addTitle: qsTr("Add App…")
            emptyText: qsTr("None yet. Add an app here, or use “Always boost” in the %1.").arg(Place.bar)
        }
    }
    Section {
        header: qsTr("Also boost games automatically")

        RuleToggle {
            title: qsTr("Games launched with CrossOver")
            note: qsTr("Wine")
            setting: pane.boost.crossOver
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: qsTr("Minecraft")
            note: qsTr("Java Edition")
            setting: pane.boost.minecraft
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: qsTr("Steam games")
            note: qsTr("steamapps folder")
            setting: pane.boost.steam
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: qsTr("Apps in the “Games” category")
            note: Place.store
            setting: pane.boost.gamesCategory
        }
        Divider {
            width: parent.width
            visible: Place.registrar !== ""
        }
        RuleToggle {
            title: qsTr("Games using GameMode")
            note: Place.registrar
            visible: Place.registrar !== ""
            setting: pane.boost.gameMode
        }
    }
    Section {
        header: qsTr("Never slowed down")
        footer: qsTr("Also protected automatically: apps playing audio, downloading or keeping the %1 awake, and system processes.").arg(Place.computer)

        AppList {
            title: qsTr("Never slowed down")
            apps: pane.boost.protectedApps
            picker: pane.model.picker
            addTitle: qsTr("Add App…")
        }
    }
    Section {
        header: qsTr("When memory runs low")

        RadioGroup {
            choices: [qsTr("Only show a notification"), qsTr("Quit the apps I mark as quittable")]
            current: pane.boost.ramAction
            onChosen: index => pane.boost.chooseRamAction(index)
            Accessible.name: qsTr("When memory runs low")
        }
    }
    Section {
        header: qsTr("Quittable apps")
        footer: pane.boost.quittableFooter

        AppList {
            title: qsTr("Quittable apps")
            apps: pane.boost.quittableApps
            picker: pane.model.picker
            addTitle: qsTr("Add Quittable App…")
            emptyText: qsTr("None yet.")
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import Vantle.Look
import Vantle.Settings

Form {
    id: pane

    required property SettingsModel model
    readonly property BoostModel boost: model.boost

    Section {
        header: "Boost these apps"
        footer: "When one of these is in front, everything else moves to the background. Add anything: an editor, a design tool, a game."

        AppList {
            apps: pane.boost.userGames
            picker: pane.model.picker
            addTitle: "Add App…"
            emptyText: "None yet. Add an app here, or use “Always boost” in the " + Place.bar + "."
        }
    }
    Section {
        header: "Also boost games automatically"

        RuleToggle {
            title: "Games launched with CrossOver"
            note: "Wine"
            setting: pane.boost.crossOver
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: "Minecraft"
            note: "Java Edition"
            setting: pane.boost.minecraft
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: "Steam games"
            note: "steamapps folder"
            setting: pane.boost.steam
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: "Apps in the “Games” category"
            note: Place.store
            setting: pane.boost.gamesCategory
        }
        Divider {
            width: parent.width
        }
        RuleToggle {
            title: "Games that ask for GameMode"
            note: "gamemoderun"
            setting: pane.boost.gameMode
        }
    }
    Section {
        header: "Never slowed down"
        footer: "Also protected automatically: apps playing audio, downloading or keeping the " + Place.computer + " awake, and system processes."

        AppList {
            apps: pane.boost.protectedApps
            picker: pane.model.picker
            addTitle: "Add App…"
        }
    }
    Section {
        header: "When memory runs low"

        RadioGroup {
            choices: ["Only show a notification", "Quit the apps I mark as quittable"]
            current: pane.boost.ramAction
            onChosen: index => pane.boost.chooseRamAction(index)
            Accessible.name: "When memory runs low"
        }
    }
    Section {
        header: "Quittable apps"
        footer: pane.boost.quittableFooter

        AppList {
            apps: pane.boost.quittableApps
            picker: pane.model.picker
            addTitle: "Add Quittable App…"
            emptyText: "None yet."
        }
    }
}

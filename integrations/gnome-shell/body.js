
// The names of whoever is told: Vantle's, and that of its self-test beside it. While nobody has them this costs
// nothing.
const NAMES = ['com.halvo.vantle.feed', 'com.halvo.vantle.feed.test'];

const FEED_PATH = '/com/halvo/vantle/desktop';
const FEED = 'com.halvo.vantle.DesktopFeed';

// The name by which they find out, and what they may ask for. `Sync` is answered in the order in which they are told
// things: by then they know all that has happened before.
const SHELL_NAME = 'com.halvo.vantle.shell';
const SHELL_PATH = '/com/halvo/vantle/shell';
const SHELL = `<node>
  <interface name="com.halvo.vantle.DesktopShell">
    <method name="Sync"/>
    <method name="Close"><arg type="s" direction="in" name="window"/></method>
    <method name="Front"><arg type="s" direction="in" name="window"/></method>
  </interface>
</node>`;

// Vantle's tray icon.
const UUID = 'vantle@halvo.com';
const ITEM_PATH = '/StatusNotifierItem';
const ITEM = 'org.kde.StatusNotifierItem';

const SHELL_TYPES = [Meta.WindowType.DESKTOP, Meta.WindowType.DOCK];
const ORDINARY_TYPES = [
    Meta.WindowType.NORMAL, Meta.WindowType.DIALOG, Meta.WindowType.MODAL_DIALOG, Meta.WindowType.TOOLBAR,
    Meta.WindowType.MENU, Meta.WindowType.UTILITY, Meta.WindowType.SPLASHSCREEN,
];

function kindOf(window) {
    const type = window.get_window_type();
    if (SHELL_TYPES.includes(type))
        return 'shell';
    return ORDINARY_TYPES.includes(type) ? 'ordinary' : 'passing';
}

function nameOf(window) {
    return window ? String(window.get_id()) : '';
}

function factsOf(window) {
    const isX11 = window.get_client_type() === Meta.WindowClientType.X11;
    const name = window.get_wm_class() ?? '';
    const application =
        window.get_gtk_application_id() ?? window.get_sandboxed_app_id() ?? (isX11 ? '' : name);
    const [class_, instance] = isX11 ? [name, window.get_wm_class_instance() ?? ''] : ['', ''];
    return [nameOf(window), window.get_pid(), class_, instance, application, kindOf(window), isX11];
}

function isIn(area, [x, y]) {
    return x >= area.x && x < area.x + area.width && y >= area.y && y < area.y + area.height;
}

// What to do with a reply, if there is one: who was asked may have left.
function answered(take) {
    return (bus, result) => {
        let reply = null;
        try {
            reply = bus.call_finish(result);
        } catch (error) {
            return;
        }
        take(reply);
    };
}

// Calls back with the process of somebody on the bus.
function askProcess(owner, take) {
    Gio.DBus.session.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus',
        'GetConnectionUnixProcessID', new GLib.Variant('(s)', [owner]), new GLib.VariantType('(u)'),
        Gio.DBusCallFlags.NONE, -1, null, answered(reply => take(reply.deepUnpack()[0])));
}

// The largest of some pictures, each as width, height and pixels of alpha, red, green and blue; null for none.
function pictureFrom(pictures) {
    if (pictures.n_children() === 0)
        return null;
    const [width, height, argb] = pictures.deepUnpack().reduce((best, each) => each[0] > best[0] ? each : best);
    const rgba = new Uint8Array(argb.length);
    for (let at = 0; at < argb.length; at += 4)
        rgba.set([argb[at + 1], argb[at + 2], argb[at + 3], argb[at]], at);
    return GdkPixbuf.Pixbuf.new_from_bytes(new GLib.Bytes(rgba), GdkPixbuf.Colorspace.RGB, true, 8, width, height,
        4 * width);
}

// Tells the owner of one name, as long as there is one.
class Feed {
    constructor(name) {
        this.owner = null;
        this._process = null;
        this._presses = 0;
        this._windows = new Map();
        this._watch = Gio.bus_watch_name(Gio.BusType.SESSION, name, Gio.BusNameWatcherFlags.NONE,
            (_bus, _name, owner) => this._begin(owner), () => this._end());
    }

    // The shell takes its extensions out while the screen is locked, and puts them in again.
    destroy() {
        if (this.owner)
            this._tell(Main.sessionMode.isLocked ? 'Stopped' : 'Left');
        this._end();
        Gio.bus_unwatch_name(this._watch);
    }

    find(name) {
        return this._windows.get(name);
    }

    _begin(owner) {
        this.owner = owner;
        this._tell('Ready', '(s)', ['gnome']);
        global.get_window_actors().forEach(actor => this._meet(actor.meta_window));
        global.display.connectObject(
            'window-created', (_display, window) => this._meet(window),
            'notify::focus-window', () => this._tellFront(), this);
        this._tellFront();
        askProcess(owner, process => {
            if (this.owner === owner)
                this._process = process;
            this._watchPresses();
        });
    }

    _end() {
        this.owner = null;
        this._process = null;
        this._watchPresses();
        global.display.disconnectObject(this);
        this._windows.forEach(window => window.disconnectObject(this));
        this._windows.clear();
    }

    _meet(window) {
        const name = nameOf(window);
        const tell = () => this._tell('Window', '(sissssb)', factsOf(window));
        this._windows.set(name, window);
        // Some windows appear before they have said what they are.
        window.connectObject(
            'notify::wm-class', tell, 'notify::gtk-application-id', tell, 'notify::window-type', tell,
            'unmanaged', () => {
                window.disconnectObject(this);
                this._windows.delete(name);
                this._tell('Gone', '(s)', [name]);
            }, this);
        tell();
    }

    _tellFront() {
        this._tell('Front', '(s)', [nameOf(global.display.focus_window)]);
        this._watchPresses();
    }

    // A panel of the owner's, which is in no list of windows, goes when it loses the focus. A press on the shell
    // itself, or on nothing, leaves the focus where it is.
    _watchPresses() {
        const front = global.display.focus_window;
        const isPanel = front !== null && front.skip_taskbar && front.get_pid() === this._process;
        if (isPanel === (this._presses !== 0))
            return;
        if (this._presses)
            global.stage.disconnect(this._presses);
        this._presses = isPanel ? global.stage.connect('captured-event', (_stage, event) => this._press(event)) : 0;
    }

    _press(event) {
        const isPress = [Clutter.EventType.BUTTON_PRESS, Clutter.EventType.TOUCH_BEGIN].includes(event.type());
        // One that follows its motion at once may come here although it is the panel's own.
        if (isPress && !isIn(global.display.focus_window.get_frame_rect(), event.get_coords()))
            global.display.unset_input_focus(event.get_time());
        return Clutter.EVENT_PROPAGATE;
    }

    _tell(method, types = '()', values = []) {
        Gio.DBus.session.call(this.owner, FEED_PATH, FEED, method, new GLib.Variant(types, values), null,
            Gio.DBusCallFlags.NO_AUTO_START, -1, null, null);
    }
}

// Vantle's tray icon, in the top bar, as long as there is no tray. Behind it is the object that a tray would ask.
class Icon {
    constructor() {
        this._owner = null;
        this._hasTray = false;
        this._button = null;
        this._watches = [
            this._watch('com.halvo.vantle', owner => {
                this._owner = owner;
            }),
            this._watch('org.kde.StatusNotifierWatcher', owner => {
                this._hasTray = owner !== null;
            }),
        ];
    }

    destroy() {
        this._watches.forEach(watch => Gio.bus_unwatch_name(watch));
        this._remove();
    }

    _watch(name, changed) {
        const take = owner => {
            changed(owner);
            this._remove();
            if (this._owner && !this._hasTray)
                this._add();
        };
        return Gio.bus_watch_name(Gio.BusType.SESSION, name, Gio.BusNameWatcherFlags.NONE,
            (_bus, _name, owner) => take(owner), () => take(null));
    }

    _add() {
        this._picture = new St.Icon({style_class: 'system-status-icon'});
        this._button = new PanelMenu.Button(0.5, 'Vantle', true);
        this._button.add_child(this._picture);
        this._button.connect('button-press-event', () => this._activate());
        this._button.connect('touch-event', (_button, event) => event.type() === Clutter.EventType.TOUCH_END
            ? this._activate() : Clutter.EVENT_PROPAGATE);
        Main.panel.addToStatusArea(UUID, this._button);
        this._news = Gio.DBus.session.signal_subscribe(this._owner, ITEM, 'NewIcon', ITEM_PATH, null,
            Gio.DBusSignalFlags.NONE, () => this._draw());
        this._draw();
    }

    _remove() {
        if (!this._button)
            return;
        Gio.DBus.session.signal_unsubscribe(this._news);
        this._button.destroy();
        this._button = null;
    }

    _activate() {
        const [x, y] = this._button.get_transformed_position();
        const point = [x + this._button.width / 2, y + this._button.height].map(Math.round);
        Gio.DBus.session.call(this._owner, ITEM_PATH, ITEM, 'Activate', new GLib.Variant('(ii)', point), null,
            Gio.DBusCallFlags.NO_AUTO_START, -1, null, null);
        return Clutter.EVENT_STOP;
    }

    _draw() {
        const button = this._button;
        Gio.DBus.session.call(this._owner, ITEM_PATH, 'org.freedesktop.DBus.Properties', 'Get',
            new GLib.Variant('(ss)', [ITEM, 'IconPixmap']), new GLib.VariantType('(v)'),
            Gio.DBusCallFlags.NO_AUTO_START, -1, null, answered(reply => {
                if (this._button === button)
                    this._picture.gicon = pictureFrom(reply.get_child_value(0).get_variant());
            }));
    }
}

class Caller {
    constructor() {
        this._icon = new Icon();
        this._feeds = NAMES.map(name => new Feed(name));
        this._object = Gio.DBusExportedObject.wrapJSObject(SHELL, this);
        this._object.export(Gio.DBus.session, SHELL_PATH);
        this._name = Gio.bus_own_name_on_connection(Gio.DBus.session, SHELL_NAME, Gio.BusNameOwnerFlags.NONE,
            null, null);
    }

    destroy() {
        this._icon.destroy();
        Gio.bus_unown_name(this._name);
        this._object.unexport();
        this._feeds.forEach(feed => feed.destroy());
    }

    SyncAsync(_parameters, invocation) {
        if (this._feedOf(invocation))
            invocation.return_value(null);
    }

    CloseAsync([name], invocation) {
        this._order(name, invocation, window => window.delete(global.get_current_time()));
    }

    // Also from another workspace, and when it is minimized.
    FrontAsync([name], invocation) {
        this._order(name, invocation, window => Main.activateWindow(window));
    }

    _order(name, invocation, act) {
        const feed = this._feedOf(invocation);
        if (!feed)
            return;
        const window = feed.find(name);
        if (window)
            act(window);
        invocation.return_value(null);
    }

    // Of who calls. A stranger is refused: what the shell keeps to itself is not to be had this way.
    _feedOf(invocation) {
        const feed = this._feeds.find(each => each.owner === invocation.get_sender());
        if (!feed)
            invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied', 'Only Vantle may ask.');
        return feed;
    }
}

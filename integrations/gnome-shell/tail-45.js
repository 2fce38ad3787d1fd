
export default class VantleExtension extends Extension {
    enable() {
        this._caller = new Caller();
    }

    disable() {
        this._caller.destroy();
        this._caller = null;
    }
}

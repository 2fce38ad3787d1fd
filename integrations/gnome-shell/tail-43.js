
function init() {
    let caller = null;
    return {
        enable() {
            caller = new Caller();
        },
        disable() {
            caller.destroy();
            caller = null;
        },
    };
}

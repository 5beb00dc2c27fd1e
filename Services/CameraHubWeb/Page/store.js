/**
 * What the page knows and shows. Whoever changes a member does it by set(), which dispatches an event of the member's
 * name.
 */
export class Store extends EventTarget {
  /** Whether the page's server is there; null before the first word from it. */
  server = null;
  /** As the event "hub" tells it; null before the first one. */
  hub = null;
  /** Where the hub runs, as the server has it. */
  hubHost = null;
  cameras = [];
  queue = [];
  /** Those that the server keeps, newest first. */
  stills = [];
  /** The camera in use; null for none. It may have gone. */
  chosen = null;
  /** The uid of the camera in use. */
  chosenUid = null;
  /** What is being taken: {kind, uid, abort}; null for nothing. */
  job = null;
  /** "none", "live", "still", "compare" or "series". */
  mode = 'none';
  /** The still to look at. */
  shown = null;
  /** Those marked for comparing, two at most. */
  marked = [];
  /** The latest bracket or time-lapse; null for none. */
  series = null;

  set(name, value) {
    this[name] = value;
    this.dispatchEvent(new Event(name));
  }

  on(names, call) {
    for (const name of names.split(' ')) this.addEventListener(name, call);
  }

  camera(uid) {
    return this.cameras.find((camera) => camera.uid === uid) ?? null;
  }

  takeCameras(cameras) {
    this.set('cameras', cameras);
    this.choose(this.chosenUid ?? cameras[0]?.uid ?? null);
  }

  /** A camera that has gone stays chosen, for when it is back. */
  choose(uid) {
    this.chosenUid = uid;
    this.set('chosen', this.camera(uid));
  }

  addStill(still) {
    if (!this.stills.some(({ id }) => id === still.id)) this.set('stills', [still, ...this.stills]);
  }

  /** Whether stills can be taken now. */
  get isReady() {
    return this.server === true && this.hub?.reachable === true && this.chosen !== null;
  }
}

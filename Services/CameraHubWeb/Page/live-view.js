import { request, streamAddress } from './api.js';
import { byId } from './dom.js';
import { showError } from './messages.js';

// A slider on its way is not followed at every step: each change opens the stream anew.
const restartDelay = 300;

/** The live view of the chosen camera, in the mode "live" and while the page is to be seen. */
export class LiveView {
  #store;
  #exposure;
  #image = byId('live-picture');
  #uid = null;
  #frameCheck = 0;
  #restart = 0;

  constructor(store, exposure) {
    this.#store = store;
    this.#exposure = exposure;
    byId('live').addEventListener('click', () => this.toggle());
    byId('fps').addEventListener('change', () => this.#restartSoon());
    exposure.addEventListener('change', () => this.#restartSoon());
    store.on('mode', () => this.#follow());
    store.on('hub server', () => this.#follow());
    store.on('chosen', () => this.#leaveOther());
    document.addEventListener('visibilitychange', () => this.#follow());
  }

  toggle() {
    if (this.#store.mode === 'live') this.#store.set('mode', this.#store.shown ? 'still' : 'none');
    else if (this.#store.isReady) this.#store.set('mode', 'live');
  }

  /** Another camera's live view is started by hand; one that comes back goes on. */
  #leaveOther() {
    if (this.#store.mode !== 'live') return;
    if (this.#uid !== null && this.#store.chosenUid !== this.#uid) {
      this.#store.set('mode', this.#store.shown ? 'still' : 'none');
    } else this.#follow();
  }

  #follow() {
    const { mode, isReady, chosenUid } = this.#store;
    if (mode !== 'live') {
      this.#stop();
      this.#uid = null;
      return;
    }
    if (document.hidden || !isReady) {
      this.#stop();
      byId('live-state').textContent = this.#whyPaused;
      byId('live-state').hidden = false;
    } else if (!this.#image.hasAttribute('src')) this.#start(chosenUid);
  }

  get #whyPaused() {
    if (document.hidden) return 'Paused while the page is not seen';
    if (!this.#store.server) return 'Paused: the server is lost';
    return this.#store.hub?.reachable ? 'Paused: the camera has gone' : 'Paused: the hub is away';
  }

  #start(uid) {
    this.#uid = uid;
    const { width } = this.#store.camera(uid);
    const room = Math.ceil(byId('stage').clientWidth * devicePixelRatio);
    const image = document.createElement('img');
    image.id = 'live-picture';
    image.alt = `Live view of ${this.#store.camera(uid).name}`;
    image.addEventListener('error', () => this.#failed(image));
    image.src = streamAddress(uid, {
      fps: byId('fps').value,
      width: room >= 16 && room < width ? room : undefined,
      exposure: this.#exposure.asked,
      settle: this.#exposure.settle,
    });
    this.#image.replaceWith(image);
    this.#image = image;
    byId('live-state').textContent = 'Waiting for the first frame: a camera that was idle takes two seconds';
    byId('live-state').hidden = false;
    image.hidden = true;
    // There is no event for the first frame of a stream.
    this.#frameCheck = setInterval(() => this.#showFirstFrame(image), 50);
  }

  #showFirstFrame(image) {
    if (image.naturalWidth === 0) return;
    clearInterval(this.#frameCheck);
    image.hidden = false;
    byId('live-state').hidden = true;
  }

  #stop() {
    clearInterval(this.#frameCheck);
    clearTimeout(this.#restart);
    this.#image.hidden = true;
    this.#image.removeAttribute('src');
  }

  #restartSoon() {
    clearTimeout(this.#restart);
    if (this.#store.mode !== 'live') return;
    this.#restart = setTimeout(() => {
      this.#stop();
      this.#follow();
    }, restartDelay);
  }

  /** An image does not tell why it failed: the same request does. */
  async #failed(image) {
    if (image !== this.#image || !image.hasAttribute('src')) return;
    const address = image.getAttribute('src');
    this.#stop();
    byId('live-state').textContent = 'The live view has ended.';
    byId('live-state').hidden = false;
    const abort = new AbortController();
    try {
      await request(address, { signal: abort.signal });
      this.#restartSoon();
    } catch (error) {
      showError(error);
    } finally {
      abort.abort();
    }
  }
}

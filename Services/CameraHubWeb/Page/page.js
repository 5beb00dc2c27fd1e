import { About } from './about.js';
import { fetchCameras } from './api.js';
import { Bracket } from './bracket.js';
import { showCameras } from './camera-list.js';
import { Controls } from './controls.js';
import { byId } from './dom.js';
import { followEvents } from './events.js';
import { Exposure } from './exposure.js';
import { Filmstrip } from './filmstrip.js';
import { followKeys } from './keys.js';
import { LiveView } from './live-view.js';
import { showConnection } from './messages.js';
import { showSeries } from './series.js';
import { endSession, hasSession } from './session.js';
import { Stage } from './stage.js';
import { StillView } from './still-view.js';
import { Store } from './store.js';
import { Taking } from './taking.js';
import { Timelapse } from './timelapse.js';

const store = new Store();
const view = new StillView();
const stage = new Stage(store, view);
const exposure = new Exposure(store);
const live = new LiveView(store, exposure);
const taking = new Taking(store);
const filmstrip = new Filmstrip(store);
const about = new About(store, exposure);
const controls = new Controls(store, {
  taking, exposure, bracket: new Bracket(store), timelapse: new Timelapse(store),
});

stage.onPicture = (picture) => about.show(picture);
showConnection(store);
showCameras(store);
showSeries(store);
followKeys(store, { controls, live, view });

byId('logout').hidden = !hasSession();
byId('logout').addEventListener('submit', endSession);

/** Only this answer names the hub's machine. */
async function nameHub() {
  try {
    store.set('hubHost', (await fetchCameras()).hub.host);
  } catch {
    // The events tell that the hub is away.
  }
}

const takers = {
  hub(hub) {
    store.set('hub', hub);
    if (hub.reachable && store.hubHost === null) nameHub();
  },
  cameras: ({ cameras }) => store.takeCameras(cameras),
  still(still) {
    store.addStill(still);
    filmstrip.refreshSoon();
  },
  queue: ({ queue }) => store.set('queue', queue),
};

followEvents({
  take: (name, value) => takers[name]?.(value),
  connected(isConnected) {
    if (isConnected) filmstrip.refresh();
    if (store.server !== isConnected) store.set('server', isConnected);
  },
});

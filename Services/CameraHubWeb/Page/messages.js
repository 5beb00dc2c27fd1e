import { byId, make } from './dom.js';

function bannerText(store) {
  if (store.server === false) return 'This page has lost its server. It tries to reach it again once a second.';
  if (store.hub?.reachable === false) {
    return `The hub is away. ${store.hub.detail ?? ''} The page goes on by itself once it is back.`;
  }
  return '';
}

function hubText(store) {
  if (store.server === null || (store.server && store.hub === null)) return 'Connecting';
  if (!store.server) return 'Server lost';
  return store.hub.reachable ? `Hub ${store.hub.version}` : 'Hub away';
}

/** Says whether hub and server are there. */
export function showConnection(store) {
  const update = () => {
    const banner = byId('banner');
    const text = bannerText(store);
    if (banner.textContent !== text) banner.textContent = text;
    banner.hidden = text === '';
    const hub = byId('hub');
    hub.textContent = hubText(store);
    hub.title = store.hubHost ? `The hub is that of ${store.hubHost}` : '';
    hub.dataset.state = text === '' ? (store.hub ? 'good' : 'unknown') : 'bad';
  };
  store.on('server hub hubHost', update);
  update();
}

export function clearError() {
  byId('error').hidden = true;
  byId('error').replaceChildren();
}

/** Shows what went wrong, until it is put away or the next thing is tried. Somebody's own cancelling is nothing. */
export function showError(error) {
  if (error.name === 'AbortError') return;
  if (error.kind === undefined) console.error(error);
  const close = make('button', { type: 'button', class: 'quiet', onclick: clearError }, 'Close');
  byId('error').replaceChildren(
    make('p', {}, make('strong', {}, error.title || 'Something went wrong'), ` ${error.message} ${error.advice ?? ''}`),
    close,
  );
  byId('error').hidden = false;
}

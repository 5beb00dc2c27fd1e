import { byId } from './dom.js';
import { showNeighbour } from './filmstrip.js';

const setting = 'camera-hub-single-keys';

function isTyping(element) {
  return element.matches('select, textarea, input:not([type="range"], [type="checkbox"])');
}

/** Single keys that work wherever the focus is, unless they have been switched off. */
export function followKeys(store, { controls, live, view }) {
  const inStill = (act) => () => store.mode === 'still' && act();
  const withPicture = (act) => () => ['still', 'compare'].includes(store.mode) && act();
  const keys = {
    t: () => controls.take(),
    l: () => live.toggle(),
    '[': () => showNeighbour(store, -1),
    ']': () => showNeighbour(store, 1),
    c: inStill(() => view.toggleCrosshair()),
    h: inStill(() => view.toggleClipping()),
    '+': withPicture(() => view.zoomBy(1)),
    '-': withPicture(() => view.zoomBy(-1)),
    0: withPicture(() => view.fit()),
    1: withPicture(() => view.showPixels()),
    '?': () => byId('keys').showModal(),
  };
  const choice = byId('single-keys');
  choice.checked = localStorage.getItem(setting) !== 'no';
  choice.addEventListener('change', () => localStorage.setItem(setting, choice.checked ? 'yes' : 'no'));
  byId('show-keys').addEventListener('click', () => byId('keys').showModal());
  document.addEventListener('keydown', (event) => {
    const isFree = choice.checked && !event.repeat && !event.ctrlKey && !event.altKey && !event.metaKey;
    if (!isFree || byId('keys').open || isTyping(event.target) || !Object.hasOwn(keys, event.key)) return;
    event.preventDefault();
    keys[event.key]();
  });
}

import { thumbnail } from './api.js';
import { byId, cameraShape, fitList, make } from './dom.js';

const noBreak = '\u00a0';

function sizeText({ width, height }) {
  return [width, '×', height].join(noBreak);
}

function buildCard(store, camera) {
  const button = make('button', { type: 'button', class: 'camera' },
    make('span', { class: 'thumb' }),
    make('span', { class: 'name' }),
    make('span', { class: 'minor' }));
  button.addEventListener('click', () => store.choose(camera.uid));
  return make('li', {}, button);
}

function fitThumbnail(thumb, still) {
  if (thumb.dataset.still === (still?.id ?? '')) return;
  thumb.dataset.still = still?.id ?? '';
  if (!still) {
    thumb.replaceChildren(cameraShape());
    return;
  }
  const image = make('img', { alt: '', loading: 'lazy', src: thumbnail(still) });
  image.addEventListener('error', () => image.replaceWith(cameraShape()));
  thumb.replaceChildren(image);
}

function updateCard(store, item, camera) {
  const button = item.firstElementChild;
  const [thumb, name, size] = button.children;
  fitThumbnail(thumb, store.stills.find(({ uid }) => uid === camera.uid));
  name.textContent = camera.name;
  button.title = camera.uid;
  const model = [camera.make, camera.model].filter(Boolean).join(' ');
  const parts = [model !== camera.name ? model : '', sizeText(camera), camera.exposureRange.replaceAll(' ', noBreak)];
  size.textContent = parts.filter(Boolean).join(' · ');
  button.setAttribute('aria-current', String(camera.uid === store.chosenUid));
}

/** What a change of the list means to somebody who does not see it. */
function news(before, after) {
  const names = (cameras, others) => cameras.filter(({ uid }) => !others.some((other) => other.uid === uid))
    .map(({ name }) => name);
  const come = names(after, before).map((name) => `${name} is plugged in.`);
  const gone = names(before, after).map((name) => `${name} has gone.`);
  return [...come, ...gone].join(' ');
}

/** The cards of the cameras, to choose one by. */
export function showCameras(store) {
  let before = null;
  const update = () => {
    fitList(byId('cameras'), store.cameras, {
      keyOf: ({ uid }) => uid,
      build: (camera) => buildCard(store, camera),
      update: (item, camera) => updateCard(store, item, camera),
    });
    byId('camera-count').textContent = store.cameras.length || '';
    byId('no-cameras').hidden = store.cameras.length > 0 || store.hub?.reachable !== true;
  };
  store.on('cameras', () => {
    if (before) byId('camera-news').textContent = news(before, store.cameras);
    before = store.cameras;
  });
  store.on('cameras stills chosen hub', update);
  update();
}

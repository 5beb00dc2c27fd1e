import { measure } from './clipping.js';
import { copy, curlCommand, hubCommand } from './commands.js';
import { byId, make } from './dom.js';
import { drawHistogram } from './histogram.js';
import { hasSession } from './session.js';
import { askedText, bytesText, dateText, secondsText, shareText } from './text.js';

function facts(still, camera) {
  const { queueMs, captureMs, fetchMs } = still.durations;
  const rows = [
    ['Camera', still.camera],
    ['Taken', dateText(new Date(still.takenAt))],
    ['Size', `${still.width} × ${still.height}, ${bytesText(still.bytes)}`],
    ['Asked', askedText(still, camera)],
    ['In force', still.exposureText ?? 'the camera could not tell'],
    ['Took', `${secondsText(queueMs + captureMs + fetchMs)}${queueMs > 50 ? `, ${secondsText(queueMs)} in the queue` : ''}`],
  ];
  if (still.wasTakenTwice) rows.push(['Note', 'Taken twice: another program’s still had taken its place.']);
  return rows;
}

/** The histogram and the facts of the still that is shown, and what can be done with it. */
export class About {
  #store;
  #exposure;
  #measured = null;
  #file = null;

  constructor(store, exposure) {
    this.#store = store;
    this.#exposure = exposure;
    byId('copy-curl').addEventListener('click', () => this.#copy(curlCommand));
    byId('copy-command').addEventListener('click', () => this.#copy(hubCommand));
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
      if (this.#measured) drawHistogram(byId('histogram'), this.#measured);
    });
  }

  show(picture) {
    const { still } = picture;
    this.#measured = measure(picture);
    byId('about').hidden = false;
    byId('about').dataset.still = still.id;
    drawHistogram(byId('histogram'), this.#measured);
    const { tooDark, tooBright } = this.#measured;
    byId('histogram-text').replaceChildren(
      make('span', { class: 'dark-share' }, `too dark ${shareText(tooDark)}`),
      make('span', { class: 'bright-share' }, `too bright ${shareText(tooBright)}`),
    );
    const rows = facts(still, this.#store.camera(still.uid));
    byId('facts').replaceChildren(...rows.map(([name, value]) => make('div', {}, make('dt', {}, name),
      make('dd', {}, value))));
    if (this.#file) URL.revokeObjectURL(this.#file);
    this.#file = URL.createObjectURL(picture.blob);
    byId('download').href = this.#file;
    byId('download').download = still.fileName;
    byId('copied').textContent = '';
  }

  async #copy(commandOf) {
    const command = commandOf(this.#store.shown, {
      settle: this.#exposure.settle, hubHost: this.#store.hubHost, hasSession: hasSession(),
    });
    const isDone = await copy(command);
    byId('copied').replaceChildren(isDone ? 'Copied: ' : 'To be copied by hand: ', make('code', {}, command));
  }
}

import { byId } from './dom.js';
import { showStill } from './filmstrip.js';
import { showError } from './messages.js';

const kinds = ['still', 'bracket', 'timelapse'];

/** What is to be taken, and the button that does it. */
export class Controls {
  #store;
  #parts;
  #kind = 'still';

  constructor(store, parts) {
    this.#store = store;
    this.#parts = parts;
    for (const kind of kinds) {
      byId(`tab-${kind}`).addEventListener('click', () => this.#select(kind));
      byId(`tab-${kind}`).addEventListener('keydown', (event) => this.#move(event));
    }
    byId('take').addEventListener('click', () => this.take());
    parts.bracket.onChange = () => this.#update();
    parts.timelapse.onChange = () => this.#update();
    store.on('chosen cameras hub server job', () => this.#update());
    this.#update();
  }

  async take() {
    if (byId('take').getAttribute('aria-disabled') === 'true') return;
    const { taking, exposure, bracket, timelapse } = this.#parts;
    const asked = { exposure: exposure.asked, settle: exposure.settle };
    try {
      if (this.#kind === 'bracket') await bracket.run(taking, asked.settle);
      else if (this.#kind === 'timelapse') await timelapse.run(taking, asked);
      else await taking.run('still', this.#store.chosenUid, async ({ take }) => showStill(this.#store, await take(asked)));
    } catch (error) {
      showError(error);
    }
  }

  #select(kind) {
    this.#kind = kind;
    for (const other of kinds) {
      const isSelected = other === kind;
      byId(`tab-${other}`).setAttribute('aria-selected', String(isSelected));
      byId(`tab-${other}`).tabIndex = isSelected ? 0 : -1;
      byId(`pane-${other}`).hidden = !isSelected;
    }
    byId('exposure').hidden = kind === 'bracket';
    this.#update();
  }

  #move(event) {
    const steps = { ArrowLeft: -1, ArrowRight: 1 };
    if (!steps[event.key]) return;
    const next = kinds[(kinds.indexOf(this.#kind) + steps[event.key] + kinds.length) % kinds.length];
    this.#select(next);
    byId(`tab-${next}`).focus();
    event.preventDefault();
  }

  #update() {
    const { bracket, timelapse } = this.#parts;
    const isPossible = {
      still: true, bracket: bracket.stops.length > 0, timelapse: timelapse.plan !== null,
    }[this.#kind];
    const labels = { still: 'Take a still', bracket: bracket.label, timelapse: timelapse.label };
    byId('take').textContent = labels[this.#kind];
    // Not "disabled", which would take the focus away.
    const isFree = this.#store.isReady && isPossible && this.#store.job === null;
    byId('take').setAttribute('aria-disabled', String(!isFree));
  }
}

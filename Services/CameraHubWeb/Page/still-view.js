import { byId } from './dom.js';
import { drawClipped } from './clipping.js';
import { followGestures } from './gestures.js';
import { Zoom } from './zoom.js';

const keyStep = 40; // CSS pixels
const big = 10;

function paint(canvas, picture) {
  canvas.width = picture.width;
  canvas.height = picture.height;
  canvas.getContext('2d').putImageData(picture.image, 0, 0);
}

/** A picture, or two of them on both sides of a divider, to be zoomed and moved, and read pixel by pixel. */
export class StillView {
  #viewer = byId('viewer');
  #zoom = new Zoom();
  #picture = null;
  #other = null;
  #split = 50;
  #pixel = null;
  #hasCrosshair = false;
  #marksClipped = false;

  constructor() {
    followGestures(this.#viewer, {
      move: (dx, dy) => this.#change((zoom) => zoom.moveBy(dx, dy)),
      zoom: (factor, x, y) => this.#change((zoom) => zoom.by(factor, x, y)),
      point: (x, y) => this.#point(x, y),
    });
    this.#viewer.addEventListener('keydown', (event) => this.#key(event));
    byId('zoom-in').addEventListener('click', () => this.zoomBy(1));
    byId('zoom-out').addEventListener('click', () => this.zoomBy(-1));
    byId('fit').addEventListener('click', () => this.fit());
    byId('one-to-one').addEventListener('click', () => this.showPixels());
    byId('crosshair-toggle').addEventListener('click', () => this.toggleCrosshair());
    byId('clipping-toggle').addEventListener('click', () => this.toggleClipping());
    byId('split').addEventListener('input', () => {
      this.#split = Number(byId('split').value);
      this.#place();
    });
    new ResizeObserver(() => {
      const { clientWidth: width, clientHeight: height } = this.#viewer;
      if (width > 0 && height > 0) this.#change((zoom) => zoom.setRoom({ width, height }));
    }).observe(this.#viewer);
  }

  /** Shows the picture, or with another one both: the first at the left. */
  show(picture, other = null) {
    this.#picture = picture;
    this.#other = other;
    paint(byId('picture'), picture);
    byId('picture').dataset.still = picture.still.id;
    if (other) paint(byId('other'), other);
    this.#pixel = null;
    this.#drawClipped();
    this.#change((zoom) => zoom.setPicture(picture));
    this.#viewer.setAttribute('aria-label',
      other ? `${picture.still.camera}: two stills` : `Still of ${picture.still.camera}`);
    if (this.#hasCrosshair) this.#moveCrosshair(0, 0);
    else this.#showPixel();
  }

  zoomBy(direction) {
    this.#change((zoom) => zoom.step(direction));
  }

  fit() {
    this.#change((zoom) => zoom.fit());
  }

  showPixels() {
    this.#change((zoom) => zoom.to(1));
  }

  toggleCrosshair() {
    this.#hasCrosshair = !this.#hasCrosshair;
    byId('crosshair-toggle').setAttribute('aria-pressed', String(this.#hasCrosshair));
    this.#pixel = null;
    if (this.#hasCrosshair) {
      this.#moveCrosshair(0, 0);
      this.#viewer.focus();
    } else this.#showPixel();
    this.#place();
  }

  toggleClipping() {
    this.#marksClipped = !this.#marksClipped;
    byId('clipping-toggle').setAttribute('aria-pressed', String(this.#marksClipped));
    this.#drawClipped();
  }

  #drawClipped() {
    const isShown = this.#marksClipped && this.#picture !== null && this.#other === null;
    byId('clipped').hidden = !isShown;
    if (isShown) drawClipped(byId('clipped'), this.#picture);
  }

  #change(how) {
    how(this.#zoom);
    this.#place();
  }

  #place() {
    if (!this.#picture) return;
    const { x, y, scale, zoom } = this.#zoom;
    const sheet = byId('sheet');
    sheet.style.transform = `translate(${x}px, ${y}px) scale(${scale})`;
    sheet.style.width = `${this.#picture.width}px`;
    sheet.style.height = `${this.#picture.height}px`;
    sheet.classList.toggle('single-pixels', zoom > 1);
    byId('zoom').textContent = `${Number((zoom * 100).toFixed(zoom < 0.1 ? 1 : 0))} %`;
    this.#placeDivider(x, scale);
    this.#placeCrosshair(x, y, scale);
  }

  #placeDivider(x, scale) {
    byId('other').hidden = this.#other === null;
    byId('divider').hidden = this.#other === null;
    if (!this.#other) return;
    byId('other').style.clipPath = `inset(0 0 0 ${this.#split}%)`;
    byId('divider').style.left = `${x + (this.#split / 100) * this.#picture.width * scale}px`;
  }

  #placeCrosshair(x, y, scale) {
    const mark = byId('crosshair');
    mark.hidden = !this.#hasCrosshair || this.#pixel === null || this.#other !== null;
    if (mark.hidden) return;
    const size = Math.max(scale, 9);
    mark.style.left = `${x + (this.#pixel.x + 0.5) * scale - size / 2}px`;
    mark.style.top = `${y + (this.#pixel.y + 0.5) * scale - size / 2}px`;
    mark.style.width = `${size}px`;
    mark.style.height = `${size}px`;
  }

  #point(x, y) {
    if (this.#hasCrosshair || !this.#picture) return;
    this.#pixel = x === undefined ? null : this.#zoom.pixelAt(x, y);
    this.#showPixel();
  }

  #moveCrosshair(dx, dy) {
    if (!this.#picture) return;
    const { width, height } = this.#picture;
    const from = this.#pixel ?? { x: Math.floor(width / 2), y: Math.floor(height / 2) };
    const within = (value, count) => Math.min(Math.max(value, 0), count - 1);
    this.#pixel = { x: within(from.x + dx, width), y: within(from.y + dy, height) };
    this.#zoom.reveal(this.#pixel.x, this.#pixel.y);
    this.#place();
    this.#showPixel();
    byId('pixel-said').textContent = byId('pixel').textContent;
  }

  #showPixel() {
    if (!this.#pixel) {
      byId('pixel').textContent = '';
      return;
    }
    const { x, y } = this.#pixel;
    const at = 4 * (y * this.#picture.width + x);
    const [r, g, b] = this.#picture.pixels.subarray(at, at + 3);
    byId('pixel').textContent = `x ${x}  y ${y}  R ${r}  G ${g}  B ${b}`;
  }

  #key(event) {
    const arrows = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
    const keys = {
      '+': () => this.zoomBy(1), '=': () => this.zoomBy(1), '-': () => this.zoomBy(-1),
      0: () => this.fit(), 1: () => this.showPixels(), c: () => this.toggleCrosshair(),
    };
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (arrows[event.key]) {
      const [dx, dy] = arrows[event.key].map((part) => part * (event.shiftKey ? big : 1));
      if (this.#hasCrosshair) this.#moveCrosshair(dx, dy);
      else this.#change((zoom) => zoom.moveBy(-dx * keyStep, -dy * keyStep));
    } else if (Object.hasOwn(keys, event.key)) keys[event.key]();
    else return;
    event.preventDefault();
    event.stopPropagation();
  }
}

// Device pixels for a pixel of the picture.
const steps = [1 / 32, 1 / 16, 1 / 8, 1 / 4, 1 / 3, 1 / 2, 2 / 3, 1, 1.5, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64];
const closest = steps.at(-1);

function clamp(value, least, most) {
  return Math.min(Math.max(value, least), most);
}

/** Where a picture lies in a window, in CSS pixels; `zoom` is in device pixels. */
export class Zoom {
  zoom = 1;
  x = 0;
  y = 0;
  isFit = true;
  #picture = { width: 1, height: 1 };
  #room = { width: 1, height: 1 };

  get scale() {
    return this.zoom / devicePixelRatio;
  }

  get fitZoom() {
    const { width, height } = this.#room;
    return Math.min(width / this.#picture.width, height / this.#picture.height, closest) * devicePixelRatio;
  }

  /** A picture of the same size takes the place of the one before. */
  setPicture({ width, height }) {
    if (width === this.#picture.width && height === this.#picture.height) return;
    this.#picture = { width, height };
    this.fit();
  }

  setRoom({ width, height }) {
    this.#room = { width: Math.max(width, 1), height: Math.max(height, 1) };
    if (this.isFit) this.fit();
    else this.moveBy(0, 0);
  }

  fit() {
    this.isFit = true;
    this.zoom = this.fitZoom;
    this.moveBy(0, 0);
  }

  /** The point of the window stays over the same point of the picture; without one, the window's middle. */
  to(zoom, x = this.#room.width / 2, y = this.#room.height / 2) {
    const at = this.pictureAt(x, y);
    this.zoom = clamp(zoom, Math.min(this.fitZoom, 1), closest);
    this.isFit = this.zoom === this.fitZoom;
    this.x = x - at.x * this.scale;
    this.y = y - at.y * this.scale;
    this.moveBy(0, 0);
  }

  by(factor, x, y) {
    this.to(this.zoom * factor, x, y);
  }

  /** To the next step: 1 closer, -1 farther. */
  step(direction) {
    const near = 1 + direction * 1e-6;
    const next = direction > 0 ? steps.find((step) => step > this.zoom * near)
      : steps.findLast((step) => step < this.zoom * near);
    this.to(next ?? (direction > 0 ? closest : this.fitZoom));
  }

  /** Not beyond the picture's edges; one that is smaller than the window stays in its middle. */
  moveBy(dx, dy) {
    const along = (offset, room, size) => (size <= room ? (room - size) / 2 : clamp(offset, room - size, 0));
    this.x = along(this.x + dx, this.#room.width, this.#picture.width * this.scale);
    this.y = along(this.y + dy, this.#room.height, this.#picture.height * this.scale);
  }

  /** Moves the picture no farther than it takes to have this pixel in the window. */
  reveal(pixelX, pixelY) {
    const along = (offset, pixel, room) => {
      const from = offset + pixel * this.scale;
      return from < 0 ? -from : Math.min(room - from - this.scale, 0);
    };
    this.moveBy(along(this.x, pixelX, this.#room.width), along(this.y, pixelY, this.#room.height));
  }

  pictureAt(x, y) {
    return { x: (x - this.x) / this.scale, y: (y - this.y) / this.scale };
  }

  /** The pixel there; null beside the picture. */
  pixelAt(x, y) {
    const at = this.pictureAt(x, y);
    const pixel = { x: Math.floor(at.x), y: Math.floor(at.y) };
    const isInside = pixel.x >= 0 && pixel.y >= 0 && pixel.x < this.#picture.width && pixel.y < this.#picture.height;
    return isInside ? pixel : null;
  }
}

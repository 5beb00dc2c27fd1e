// What a hand does to a picture: drag, pinch, wheel.

const wheelStep = 0.002;
const lineHeight = 16;

function placeIn(element, event) {
  const box = element.getBoundingClientRect();
  return { x: event.clientX - box.left, y: event.clientY - box.top };
}

function middle(a, b) {
  return { x: (a.x + b.x) / 2, y: (a.y + b.y) / 2 };
}

/**
 * Calls move(dx, dy), zoom(factor, x, y), and point(x, y) or point() once the pointer has left; all in CSS pixels of
 * the element.
 */
export function followGestures(element, { move, zoom, point }) {
  const fingers = new Map();

  function moved(id, place) {
    const before = fingers.get(id);
    const other = [...fingers].find(([key]) => key !== id)?.[1];
    fingers.set(id, place);
    if (!other) {
      move(place.x - before.x, place.y - before.y);
      return;
    }
    const distance = (a) => Math.max(Math.hypot(a.x - other.x, a.y - other.y), 1);
    const [from, to] = [middle(before, other), middle(place, other)];
    move(to.x - from.x, to.y - from.y);
    zoom(distance(place) / distance(before), to.x, to.y);
  }

  element.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    element.setPointerCapture(event.pointerId);
    fingers.set(event.pointerId, placeIn(element, event));
  });
  element.addEventListener('pointermove', (event) => {
    const place = placeIn(element, event);
    point(place.x, place.y);
    if (fingers.has(event.pointerId)) moved(event.pointerId, place);
  });
  for (const name of ['pointerup', 'pointercancel']) {
    element.addEventListener(name, (event) => fingers.delete(event.pointerId));
  }
  element.addEventListener('pointerleave', () => point());
  element.addEventListener('wheel', (event) => {
    event.preventDefault();
    const distance = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? event.deltaY * lineHeight : event.deltaY;
    const place = placeIn(element, event);
    zoom(Math.exp(-distance * wheelStep), place.x, place.y);
  }, { passive: false });
}

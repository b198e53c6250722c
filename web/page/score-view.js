// The score panel: the whole score, to scroll through, of which only the
// lines in sight (and some around them) are elements of the page. The score
// stays as the run wrote it, in bytes, with where each line starts; a line is
// decoded when it comes into sight. A score of up to WHOLE lines is shown
// whole.
const WHOLE = 600;
const AROUND = 150;

export class ScoreView {
  constructor(panel) {
    this.panel = panel;
    this.spacer = document.createElement('div');
    this.spacer.className = 'score-spacer';
    this.text = document.createElement('pre');
    this.text.className = 'score-text';
    panel.replaceChildren(this.spacer, this.text);
    this.bytes = new Uint8Array();
    this.starts = new Uint32Array([0]);
    this.first = 0;
    this.last = 0;
    this.lineHeight = 0;
    this.decoder = new TextDecoder();
    this.pending = false;
    panel.addEventListener('scroll', () => {
      if (this.pending) return;
      this.pending = true;
      requestAnimationFrame(() => { this.pending = false; this.place(false); });
    });
  }

  // Number of lines (a last line without its newline counts).
  get lines() { return this.starts.length - 1; }

  // The score: its bytes and the offset of each line's start, closed by the
  // length of the bytes.
  show(bytes, starts) {
    this.bytes = bytes;
    this.starts = starts;
    this.place(true);
  }

  // The text of lines [from, to).
  slice(from, to) {
    return this.decoder.decode(this.bytes.subarray(this.starts[from], this.starts[to]));
  }

  // The whole text, as scrolling through the panel shows it.
  wholeText() { return this.slice(0, this.lines); }

  place(changed) {
    if (!this.lineHeight) {
      this.text.textContent = 'x';
      this.lineHeight = this.text.getBoundingClientRect().height || 15;
    }
    const n = this.lines;
    let first = 0;
    let last = n;
    if (n > WHOLE) {
      const top = Math.floor(this.panel.scrollTop / this.lineHeight);
      const seen = Math.ceil(this.panel.clientHeight / this.lineHeight);
      first = Math.max(0, Math.min(top, n - seen) - AROUND);
      last = Math.min(n, top + seen + AROUND);
      // Scrolling while the lines in sight are well inside those there
      // changes nothing.
      const inside = top - this.first >= AROUND / 3 || this.first === 0;
      const below = this.last - (top + seen) >= AROUND / 3 || this.last === n;
      if (!changed && inside && below) return;
    }
    this.first = first;
    this.last = last;
    // What is in the page already stays (a run that wrote the same score).
    const height = `${n * this.lineHeight}px`;
    const top = `${first * this.lineHeight}px`;
    const text = this.slice(first, last);
    if (this.spacer.style.height !== height) this.spacer.style.height = height;
    if (this.text.style.top !== top) this.text.style.top = top;
    if (this.text.textContent !== text) this.text.textContent = text;
  }
}

// Where each line of `bytes` starts, closed by their length.
export function lineStarts(bytes) {
  let starts = new Uint32Array(1024);
  let k = 1;
  const n = bytes.length;
  for (let i = 0; i < n; i++) {
    if (bytes[i] !== 10) continue;
    if (k + 2 > starts.length) {
      const more = new Uint32Array(starts.length * 2);
      more.set(starts);
      starts = more;
    }
    starts[k++] = i + 1;
  }
  if (n > 0 && bytes[n - 1] !== 10) k++;
  starts[k - 1] = n;
  return starts.slice(0, k);
}

// The heights of a long list's items, with sums over any beginning of it in O(log n)
// (a Fenwick tree), so that a single measured item costs no walk over the list.
class Heights {
  constructor(count, estimate) {
    this.count = count;
    this.values = new Float64Array(count).fill(estimate);
    this.sums = new Float64Array(count + 1);
    for (let at = 1; at <= count; at++) {
      this.sums[at] += estimate;
      const parent = at + (at & -at);
      if (parent <= count) this.sums[parent] += this.sums[at];
    }
    this.top = 1;
    while (this.top * 2 <= count) this.top *= 2;
    this.total = count * estimate;
  }

  set(index, height) {
    const change = height - this.values[index];
    if (change === 0) return;
    this.values[index] = height;
    this.total += change;
    for (let at = index + 1; at <= this.count; at += at & -at) this.sums[at] += change;
  }

  // Where an item begins: the sum of all heights before it.
  offset(index) {
    let sum = 0;
    for (let at = index; at > 0; at -= at & -at) sum += this.sums[at];
    return sum;
  }

  // The item that covers a position; the first or last one for positions outside.
  indexAt(position) {
    let index = 0;
    let rest = Math.max(0, position);
    for (let step = this.top; step > 0; step >>= 1) {
      if (index + step <= this.count && this.sums[index + step] <= rest) {
        index += step;
        rest -= this.sums[index];
      }
    }
    return Math.min(index, this.count - 1);
  }
}

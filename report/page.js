// Sorts and filters the tables of the page. All that they show is there without it.
"use strict";

(function () {
  // What a cell is sorted by: its number, or its text.
  function valueOf(row, column) {
    const cell = row.cells[column];
    const given = cell.dataset.v;
    const text = given === undefined ? cell.textContent.trim() : given;
    const number = Number(text.replace(/,/g, ""));
    return text === "" || Number.isNaN(number) ? text : number;
  }

  function compare(one, other) {
    const areNumbers = typeof one === "number" && typeof other === "number";
    if (areNumbers) return one - other;
    if (typeof one !== typeof other) return typeof one === "number" ? -1 : 1;
    return one < other ? -1 : one > other ? 1 : 0;
  }

  function sortBy(table, column, header) {
    const isDescending = header.getAttribute("aria-sort") === "ascending";
    for (const other of table.tHead.rows[0].cells) other.removeAttribute("aria-sort");
    header.setAttribute("aria-sort", isDescending ? "descending" : "ascending");
    const keyed = Array.from(table.tBodies[0].rows, (row, n) => [valueOf(row, column), n, row]);
    keyed.sort((a, b) => (isDescending ? compare(b[0], a[0]) : compare(a[0], b[0])) || a[1] - b[1]);
    table.tBodies[0].append(...keyed.map((entry) => entry[2]));
  }

  // Not by <button>, which is missing where paper repeats the header.
  function makeSortable(table) {
    Array.from(table.tHead.rows[0].cells).forEach((header, column) => {
      const button = document.createElement("span");
      button.setAttribute("role", "button");
      button.tabIndex = 0;
      button.append(...header.childNodes);
      header.append(button);
      button.addEventListener("click", () => sortBy(table, column, header));
      button.addEventListener("keydown", (event) => {
        if (event.key !== "Enter" && event.key !== " ") return;
        event.preventDefault();
        sortBy(table, column, header);
      });
    });
  }

  // A field for words, and a choice of what stands in the table's last column.
  function makeFilters(table) {
    const rows = Array.from(table.tBodies[0].rows);
    const place = document.createElement("div");
    place.className = "filters";
    const words = document.createElement("input");
    words.type = "search";
    words.placeholder = "scaffold or gap number";
    words.setAttribute("aria-label", "Filter by scaffold or gap number");
    const reasons = document.createElement("select");
    reasons.setAttribute("aria-label", "Filter by what is said of the gap");
    const given = Array.from(new Set(rows.map((row) => row.dataset.why))).sort();
    for (const reason of ["", ...given]) reasons.add(new Option(reason || "all gaps", reason));
    const shown = document.createElement("span");
    shown.setAttribute("role", "status");

    function filter() {
      const wanted = words.value.trim().toLowerCase();
      let count = 0;
      for (const row of rows) {
        const text = row.cells[0].textContent + "\n" + row.cells[1].textContent;
        const fits = (!reasons.value || row.dataset.why === reasons.value) &&
          text.toLowerCase().includes(wanted);
        row.hidden = !fits;
        if (fits) ++count;
      }
      shown.textContent = count.toLocaleString("en") + " of " + rows.length.toLocaleString("en") +
        " rows";
    }

    words.addEventListener("input", filter);
    reasons.addEventListener("change", filter);
    place.append(words, reasons, shown);
    table.closest(".scroll").before(place);
    filter();
  }

  for (const table of document.querySelectorAll("table.sorts")) makeSortable(table);
  for (const table of document.querySelectorAll("table.filters-too")) makeFilters(table);

  // A drawing that is folded away opens when it is gone to.
  function unfold() {
    const target = location.hash.length > 1 && document.getElementById(location.hash.slice(1));
    const folded = target && target.closest("details");
    if (folded) {
      folded.open = true;
      target.scrollIntoView();
    }
  }
  addEventListener("hashchange", unfold);
  unfold();
})();

"use strict";
(() => {
  const byId = (id) => document.getElementById(id);
  const search = byId("page-search");
  const family = byId("page-family");
  const status = byId("page-status");
  const noun = status.dataset.noun;
  const total = Number(document.documentElement.dataset.total);

  // Upper and lower case are equal, also of umlauts; a capital sharp s is two letters to many.
  const fold = (text) => text.normalize("NFC").toLowerCase().replaceAll("ß", "ss");

  const links = new Map([...document.querySelectorAll("nav li")].map(
    (item) => [item.querySelector("a").hash.slice(1), item]));
  const classes = [...document.querySelectorAll("main > section")].map((section) => {
    const header = section.querySelector("header");
    const names = section.id + "\n" + header.querySelector(".facts code").textContent;
    return {
      section,
      family: section.dataset.family,
      header: fold(header.textContent),
      link: links.get(section.id),
      rows: [...section.querySelectorAll("tbody > tr")].map((row) => ({
        row,
        text: fold(names + "\n" + row.textContent),
        exact: new Set([...row.querySelectorAll(".name")].map((each) => fold(each.textContent))
          .concat(row.lastElementChild.textContent.match(/\d+/g) ?? [])),
      })),
    };
  });

  const show = (element, visible) => {
    if (element.hidden === visible) element.hidden = !visible;
  };

  // Marks what was found, where the browser can do so without touching the text.
  const highlight = (words, rows) => {
    if (!window.Highlight || !CSS.highlights) return;
    CSS.highlights.delete("found");
    if (!words.length) return;
    const ranges = [];
    for (const cell of rows.slice(0, 300).flatMap((row) => [...row.cells])) {
      // Names are cut where they may break, so a word can begin in one piece and end in another.
      const pieces = [];
      let text = "";
      const walker = document.createTreeWalker(cell, NodeFilter.SHOW_TEXT);
      for (let node = walker.nextNode(); node; node = walker.nextNode()) {
        pieces.push({ node, start: text.length });
        const lower = node.data.toLowerCase();
        text += lower.length === node.data.length ? lower : node.data;
      }
      const place = (at, edge) => {
        const piece = pieces.findLast(({ start }) => start < at + edge);
        return [piece.node, at - piece.start];
      };
      for (const word of words) {
        for (let at = text.indexOf(word); at >= 0; at = text.indexOf(word, at + word.length)) {
          const range = new Range();
          range.setStart(...place(at, 1));
          range.setEnd(...place(at + word.length, 0));
          ranges.push(range);
        }
      }
    }
    CSS.highlights.set("found", new Highlight(...ranges));
  };

  const apply = () => {
    const whole = fold(search.value).trim();
    const words = whole.split(/\s+/).filter(Boolean);
    const found = [];
    let classCount = 0;
    for (const each of classes) {
      const wanted = !family.value || each.family === family.value;
      let count = 0;
      for (const one of each.rows) {
        const hit = wanted && words.every((word) => one.text.includes(word));
        show(one.row, hit);
        one.row.classList.toggle(
          "exact", hit && [whole, ...words].some((word) => one.exact.has(word)));
        if (hit) {
          ++count;
          found.push(one.row);
        }
      }
      const visible = count > 0 || (wanted && words.every((word) => each.header.includes(word)));
      show(each.section, visible);
      const table = each.section.querySelector("table");
      if (table) show(table, count > 0);
      show(each.link, visible);
      each.link.querySelector("small").textContent = count;
      if (visible) ++classCount;
    }
    for (const list of document.querySelectorAll("nav ul")) {
      const any = [...list.children].some((item) => !item.hidden);
      show(list, any);
      show(list.previousElementSibling, any);
      show(list.previousElementSibling.previousElementSibling, any);
    }
    const filtered = words.length > 0 || family.value !== "";
    const inClasses = ` in ${classCount} ${classCount === 1 ? "class" : "classes"}`;
    const figure = (count) => count.toLocaleString("en");
    status.textContent = (filtered ? `${figure(found.length)} of ` : "") +
      `${figure(total)} ${noun}` + (classCount ? inClasses : "");
    const empty = byId("page-empty");
    show(empty, classCount === 0);
    show(byId("page-all-families"), family.value !== "");
    empty.querySelector("p").textContent = `Nothing matches “${search.value.trim()}”` +
      (family.value ? ` in ${family.selectedOptions[0].textContent}.` : ".");
    highlight(words, found);
    document.documentElement.dataset.shown = found.length;
  };

  // The search stands in the address, so that a found setting can be passed on as a link.
  const remember = () => {
    const state = new URLSearchParams();
    if (search.value.trim()) state.set("q", search.value.trim());
    if (family.value) state.set("family", family.value);
    const text = state.toString();
    history.replaceState(null, "", text ? "#" + text : location.pathname + location.search);
  };

  const searched = () => {
    apply();
    remember();
    window.scrollTo(0, 0);
  };

  const clear = () => {
    search.value = "";
    family.value = "";
    searched();
    search.focus();
  };

  const follow = () => {
    const hash = location.hash.slice(1);
    if (/^(q|family)=/.test(hash)) {
      const state = new URLSearchParams(hash);
      search.value = state.get("q") ?? "";
      family.value = state.get("family") ?? "";
      if (family.selectedIndex < 0) family.value = "";
      apply();
      return;
    }
    const target = hash && byId(hash);
    if (target && target.closest("[hidden]")) {
      search.value = "";
      family.value = "";
      apply();
      target.scrollIntoView();
    }
  };

  const copy = async (element) => {
    const text = element.textContent;
    try {
      await navigator.clipboard.writeText(text);
    } catch {
      getSelection().selectAllChildren(element);
      document.execCommand("copy");
    }
    const note = byId("page-copied");
    note.textContent = `Copied: ${text}`;
    note.hidden = false;
    clearTimeout(copy.timer);
    copy.timer = setTimeout(() => { note.hidden = true; }, 1500);
  };

  const shownRows = () => [...document.querySelectorAll("tbody > tr:not([hidden])")]
    .filter((row) => !row.closest("section[hidden]"));

  const focusName = (row, at) => {
    const names = row?.querySelectorAll(".name") ?? [];
    const name = names[Math.min(at, names.length - 1)];
    name?.focus();
    name?.scrollIntoView({ block: "nearest" });
  };

  const firstMatch = () => focusName(document.querySelector("tbody > tr.exact") ?? shownRows()[0], 0);

  const move = (from, key) => {
    const row = from.closest("tr");
    if (!row) return;
    const names = [...row.querySelectorAll(".name")];
    const at = names.indexOf(from);
    if (key === "ArrowLeft") names[at - 1]?.focus();
    else if (key === "ArrowRight") names[at + 1]?.focus();
    else {
      const rows = shownRows();
      const next = rows[rows.indexOf(row) + (key === "ArrowDown" ? 1 : -1)];
      if (next) focusName(next, at);
      else if (key === "ArrowUp") search.focus();
    }
  };

  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const field = event.target.closest?.("input, select");
    const name = event.target.closest?.(".name");
    if (event.key === "Escape") clear();
    else if (event.key === "/" && !field) {
      search.focus();
      search.select();
    } else if (event.target === search && ["Enter", "ArrowDown"].includes(event.key)) firstMatch();
    else if (name && event.key === "Enter") copy(name);
    else if (name && event.key.startsWith("Arrow")) move(name, event.key);
    else return;
    event.preventDefault();
  });
  document.addEventListener("click", (event) => {
    const name = event.target.closest(".name");
    if (name && getSelection().isCollapsed) copy(name);
  });
  search.addEventListener("input", searched);
  family.addEventListener("change", searched);
  byId("page-clear").addEventListener("click", clear);
  byId("page-all-families").addEventListener("click", () => {
    family.value = "";
    searched();
  });
  addEventListener("hashchange", follow);

  // Paper cannot be unfolded.
  let unfolded = [];
  addEventListener("beforeprint", () => {
    unfolded = [...document.querySelectorAll("main details:not([open])")];
    for (const each of unfolded) each.open = true;
  });
  addEventListener("afterprint", () => {
    for (const each of unfolded) each.open = false;
  });

  search.disabled = family.disabled = false;
  if (matchMedia("(max-width: 1299px)").matches) byId("page-contents").open = false;
  apply();
  follow();
  if (!location.hash) search.focus();
})();

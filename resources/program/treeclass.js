// Tessaly tree menu: the tree of links at the left of a report site.
//
// The menu page loads this file, then a <name>treemenu.js that describes the tree with
// these calls, then runs initializeDocument() in its body:
//
//   foldersTree = gFld("<b>Title</b>", "display.html")   the root folder
//   aux1 = insFld(foldersTree, gFld("Caption", "page.html"))   a folder inside a folder
//   insDoc(aux1, gLnk("R", "Caption", "file.htm"))        a link inside a folder
//
// gLnk's first argument says where the link opens: "R" the right-hand frame of the site
// ("display"), "B" a new window, "T" the whole window, "S" the tree's own frame.
// Settings, read when the tree is drawn: USETEXTLINKS (1: a folder's caption opens its
// page), STARTALLOPEN (1: every folder starts open), ICONPATH (folder of the icons, with
// a closing "/").
//
// Plain modern JavaScript over the DOM; no other file is needed.

var USETEXTLINKS = (typeof USETEXTLINKS === "undefined") ? 1 : USETEXTLINKS;
var STARTALLOPEN = (typeof STARTALLOPEN === "undefined") ? 0 : STARTALLOPEN;
var ICONPATH = (typeof ICONPATH === "undefined") ? "" : ICONPATH;
var foldersTree = (typeof foldersTree === "undefined") ? null : foldersTree;

function TreeFolder(caption, url) {
  this.caption = caption;
  this.url = url || "";
  this.children = [];
  this.parent = null;
  this.open = false;
  this.isFolder = true;
}

function TreeLink(target, caption, url) {
  this.target = target || "R";
  this.caption = caption;
  this.url = url || "";
  this.parent = null;
  this.isFolder = false;
}

function gFld(caption, url) { return new TreeFolder(caption, url); }
function gLnk(target, caption, url) { return new TreeLink(target, caption, url); }

function insFld(parentFolder, childFolder) {
  childFolder.parent = parentFolder;
  parentFolder.children.push(childFolder);
  return childFolder;
}

function insDoc(parentFolder, document_) {
  document_.parent = parentFolder;
  parentFolder.children.push(document_);
  return document_;
}

var TreeMenu = (function () {
  "use strict";

  var STYLE =
    "#treeMenu{font:13px/1.35 'Segoe UI','DejaVu Sans',Helvetica,Arial,sans-serif;" +
    "color:#1d2733;white-space:nowrap;margin-top:6px;user-select:none}" +
    "#treeMenu .row{display:flex;align-items:center;height:22px}" +
    "#treeMenu img{width:16px;height:22px;flex:none;display:block}" +
    "#treeMenu img.toggle{cursor:pointer}" +
    "#treeMenu img.icon{margin-right:4px}" +
    "#treeMenu a{color:#1d2733;text-decoration:none;padding:1px 4px;border-radius:3px}" +
    "#treeMenu a:hover{background:#e8eef6;text-decoration:underline}" +
    "#treeMenu a.selected{background:#1f5fa8;color:#fff}" +
    "#treeMenu span.caption{padding:1px 4px}" +
    "#treeMenu .root{font-size:14px;margin-bottom:2px}";

  var selected = null;

  function icon(name, className) {
    var img = document.createElement("img");
    img.src = ICONPATH + name;
    img.alt = "";
    if (className) img.className = className;
    return img;
  }

  function targetFor(code) {
    var framed = window.top !== window.self;
    switch (String(code).toUpperCase()) {
      case "B": return "_blank";
      case "T": return "_top";
      case "S": return "_self";
      default: return framed ? "display" : "_blank";
    }
  }

  function isPicture(url) { return /\.(jpe?g|gif|png)$/i.test(url); }

  function select(anchor) {
    if (selected) selected.classList.remove("selected");
    selected = anchor;
    anchor.classList.add("selected");
  }

  function makeCaption(node, target) {
    if (!node.url || (node.isFolder && !USETEXTLINKS)) {
      var span = document.createElement("span");
      span.className = "caption";
      span.innerHTML = node.caption;
      return span;
    }
    var a = document.createElement("a");
    a.href = node.url;
    a.target = target;
    a.innerHTML = node.caption;  // captions may carry markup, e.g. the bold title
    a.addEventListener("click", function () { select(a); });
    return a;
  }

  // One row: the lines of the ancestors, this node's connector, its icon and caption.
  function render(node, prefix, isLast, container) {
    var row = document.createElement("div");
    row.className = "row";
    node.row = row;
    for (var i = 0; i < prefix.length; i++)
      row.appendChild(icon(prefix[i] ? "vertline.gif" : "blank.gif"));

    if (node.isFolder) {
      var hasChildren = node.children.length > 0;
      var toggle = icon(connectorName(node, isLast), hasChildren ? "toggle" : "");
      var folderIcon = icon(node.open ? "folderopen.gif" : "folderclosed.gif", "icon");
      row.appendChild(toggle);
      row.appendChild(folderIcon);
      var caption = makeCaption(node, targetFor("R"));
      row.appendChild(caption);
      container.appendChild(row);

      var box = document.createElement("div");
      box.style.display = node.open ? "" : "none";
      container.appendChild(box);
      var childPrefix = prefix.concat([!isLast]);
      node.children.forEach(function (child, k) {
        render(child, childPrefix, k === node.children.length - 1, box);
      });

      var flip = function (wantOpen) {
        node.open = (wantOpen === undefined) ? !node.open : wantOpen;
        box.style.display = node.open ? "" : "none";
        toggle.src = ICONPATH + connectorName(node, isLast);
        folderIcon.src = ICONPATH + (node.open ? "folderopen.gif" : "folderclosed.gif");
      };
      if (hasChildren) {
        toggle.addEventListener("click", function () { flip(); });
        folderIcon.addEventListener("click", function () { flip(); });
        folderIcon.style.cursor = "pointer";
        if (caption.tagName === "A") caption.addEventListener("click", function () { flip(true); });
        else caption.addEventListener("click", function () { flip(); });
      }
    } else {
      row.appendChild(icon(isLast ? "lastnode.gif" : "node.gif"));
      row.appendChild(icon(isPicture(node.url) ? "graph.gif" : "doc.gif", "icon"));
      row.appendChild(makeCaption(node, targetFor(node.target)));
      container.appendChild(row);
    }
  }

  function connectorName(folder, isLast) {
    if (folder.children.length === 0) return isLast ? "lastnode.gif" : "node.gif";
    if (folder.open) return isLast ? "mlastnode.gif" : "mnode.gif";
    return isLast ? "plastnode.gif" : "pnode.gif";
  }

  function openAll(folder) {
    folder.open = true;
    folder.children.forEach(function (c) { if (c.isFolder) openAll(c); });
  }

  function draw() {
    var style = document.createElement("style");
    style.textContent = STYLE;
    document.head.appendChild(style);

    var holder = document.createElement("div");
    holder.id = "treeMenu";
    var here = document.currentScript;
    if (here && here.parentNode) here.parentNode.insertBefore(holder, here);
    else document.body.appendChild(holder);
    if (!foldersTree) return holder;

    if (STARTALLOPEN) openAll(foldersTree);
    foldersTree.open = true;
    // The root: its icon and caption, then its children with no lines before them.
    var rootRow = document.createElement("div");
    rootRow.className = "row root";
    rootRow.appendChild(icon("folderopen.gif", "icon"));
    rootRow.appendChild(makeCaption(foldersTree, targetFor("R")));
    holder.appendChild(rootRow);
    foldersTree.children.forEach(function (child, k) {
      render(child, [], k === foldersTree.children.length - 1, holder);
    });
    holder.setAttribute("data-ready", "1");
    return holder;
  }

  return { draw: draw };
})();

function initializeDocument() {
  return TreeMenu.draw();
}

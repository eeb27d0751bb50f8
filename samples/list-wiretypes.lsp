;;; list-wiretypes.lsp -- the wire types of every drawing in a folder, with the colour of
;;; each wire type's layer, and for the drawing that is open how many wires lie on each.
;;;
;;;   orvex --batch --eval '(setq zel-folder "/projects/a")' --script list-wiretypes.lsp
;;;
;;; zel-folder names the folder (the current folder when it is not set), zel-pattern the
;;; wire types to list ("*" when it is not set: every one).

(defun zel-colour-name (index / names)
  (setq names '((1 . "red") (2 . "yellow") (3 . "green") (4 . "cyan") (5 . "blue")
                (6 . "magenta") (7 . "white") (256 . "BYLAYER") (0 . "BYBLOCK")))
  (cond ((assoc index names) (cdr (assoc index names)))
        (T (itoa index))))

;; One line per wire type of the drawing at `path` that matches `pattern`.
(defun zel-list-drawing (path pattern / types info count)
  (setq types (zel_get_active_dwg_wiretype path)
        count 0)
  (princ (strcat "\nDrawing " path))
  (foreach wiretype types
    (if (wcmatch (strcase wiretype) (strcase pattern))
      (progn
        (setq info (zel_get_wiretype_layer_info path wiretype)
              count (1+ count))
        (princ (strcat "\n  " wiretype "  colour "
                       (zel-colour-name (atoi (car info)))
                       "  linetype " (cadr info))))))
  (if (= count 0) (princ "\n  no wire types"))
  count)

;; The wires of the open drawing: the lines on each of its wire types.
(defun zel-count-wires (/ wires)
  (princ "\nWires of the open drawing")
  (foreach wiretype (zel_get_active_dwg_wiretype)
    (setq wires (ssget "X" (list '(0 . "LINE") (cons 8 wiretype))))
    (princ (strcat "\n  " wiretype "  " (itoa (if wires (sslength wires) 0)) " wires"))))

(defun zel-list-folder (folder pattern / drawings total path)
  (setq total 0)
  (if (not (findfile folder))
    (princ (strcat "\nNo folder " folder))
    (progn
      (setq drawings (vl-directory-files folder "*.dwg" -1))
      (foreach name drawings
        (setq path (findfile (strcat folder "/" name)))
        (if path (setq total (+ total (zel-list-drawing path pattern)))))
      (princ (strcat "\n" (itoa (length drawings)) " drawing(s), "
                     (itoa total) " wire type(s)"))))
  (zel-count-wires)
  (princ "\n")
  (princ))

(zel-list-folder (if (boundp 'zel-folder) zel-folder ".")
                 (if (boundp 'zel-pattern) zel-pattern "*"))

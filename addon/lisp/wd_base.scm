;;;; The add-on's LISP side, shared helpers.
;;;;
;;;; The host loads every .scm file of this folder, sorted by name, into each document's
;;;; LISP environment when the document opens, before any module hears of the drawing.
;;;; The add-on's C++ services (zel_project_*, zel_gbl_*, zel_dwg_*, zel_wd_m_attributes)
;;;; come from ZelAddonLisp.ovm, which defines them in the document right after; so these
;;;; files only define functions here and call the services when they run.
;;;;
;;;; The functions that other modules reach through ovedInvoke are exported with
;;;; vl-orvex-defun. None of them raises a LISP error for a bad argument: it says what is
;;;; wrong at the command line and answers nil.

;; A message at the command line naming the function; answers nil for the caller to pass on.
(define (wd-complain who text)
  (princ (strcat "\n" who ": " text "\n"))
  nil)

(define (wd-path? x)
  (and (string? x) (> (string-length x) 0)))

;; Drawings as the add-on's callers give them: a list of paths, or one path alone.
(define (wd-drawing-paths? x)
  (or (wd-path? x)
      (and (list? x) (and-map wd-path? x))))

(define (wd-as-list x)
  (if (string? x) (list x) x))

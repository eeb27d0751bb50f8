;;;; Drawing locks, as the add-on's callers ask about them. A lock is the file the host
;;;; writes beside a drawing that it opens for editing; zel_dwg_lock_info reads it.

;; (| wdupda_chkdwglockstatus| drawings mode prompt): the name begins with a blank, and
;; callers send it so. `drawings' is a list of paths (or one path); `mode' (2) and `prompt'
;; (nil) are taken as the callers send them and change nothing. Answers
;; (user machine pid drawing) for the first drawing locked by another live process, and
;; nil when none is: a stale lock, or one of this very process, holds nothing against us.
(define (| wdupda_chkdwglockstatus| . args)
  (let ((drawings (nth 0 args)))
    (if (wd-drawing-paths? drawings)
        (wd-first-foreign-lock (wd-as-list drawings))
        (wd-complain " wdupda_chkdwglockstatus" "give a list of drawing paths"))))

(define (wd-first-foreign-lock drawings)
  ;; A list that comes round again would be walked for ever: it holds no drawing.
  (let loop ((rest (if (list? drawings) drawings '())))
    (if (null rest)
        nil
        (let ((lock (zel_dwg_lock_info (car rest))))
          (if (and lock (equal (nth 3 lock) "live"))
              (list (nth 0 lock) (nth 1 lock) (nth 2 lock) (car rest))
              (loop (cdr rest)))))))

;; (c:zel_upd_unlock_dwgs drawings mode): removes the locks of the drawings (a list of
;; paths, or one path); `mode' (1) is taken and changes nothing. T when every lock is
;; gone; nil, with a message for each, when a lock file cannot be removed.
(define (c:zel_upd_unlock_dwgs . args)
  (let ((drawings (nth 0 args)))
    (if (wd-drawing-paths? drawings)
        (let loop ((rest (wd-as-list drawings)) (all T))
          (if (null rest)
              all
              (loop (cdr rest) (and (zel_dwg_unlock (car rest)) all))))
        (wd-complain "c:zel_upd_unlock_dwgs" "give a list of drawing paths"))))

;; A name with a blank is written between bars.
(vl-orvex-defun '| wdupda_chkdwglockstatus|)
(vl-orvex-defun 'c:zel_upd_unlock_dwgs)

;;;; Layers asked for at the command line.

;; (wd_cfg_add_lay [mode [default]]): asks for a layer name or a wildcard pattern (as
;; "RED*" or "W?_*,BK*") at the command line, spaces included, and returns the text typed.
;; nil when the drafter cancels or only presses Enter. In a batch run the answer comes
;; from the input queue (orvex-queue-input). `mode` and `default` are accepted for the
;; callers' sake; the wire type dialog passes 1 and nil.
(define (wd_cfg_add_lay . ignored)
  (let ((text (catch #t
                (lambda () (getstring T "\nLayer name or pattern to add as wire types: "))
                (lambda args #f))))
    (if (and (string? text) (not (string-null? (string-trim-both text))))
        (string-trim-both text)
        nil)))

(vl-orvex-defun 'wd_cfg_add_lay)

;;;; The wire types of another drawing, in the shape the module's import list reads.

;; (wd_wirlay_get_dwg_wiretype_settings "drawing"): one list per wire type of the drawing
;; or template at that path, in the drawing's order:
;;   (layer wire-colour wire-size value1 ... value20 flag)
;; all texts, the flag "1" for a wire and "0" for a layer that only carries wire data.
;; nil for a file without wire types or that cannot be read. The drawing is read through
;; the module's functions for other drawings, so open or not, it is read from its file.
(define (wd_wirlay_get_dwg_wiretype_settings . args)
  (let ((drawing (nth 0 args)))
    (if (wd-path? drawing)
        (let ((layers (zel_get_active_dwg_wiretype drawing)))
          (if (and layers (list? layers))
              (wd-wirlay-rows drawing layers)
              nil))
        (wd-complain "wd_wirlay_get_dwg_wiretype_settings"
                     "give the path of a drawing or template"))))

;; A layer whose record cannot be read (the file changed under us) is left out.
(define (wd-wirlay-rows drawing layers)
  (let loop ((rest (if (list? layers) layers '())) (rows '()))
    (if (null rest)
        (if (null rows) nil (reverse rows))
        (let ((record (zel_get_dwg_wiretype_settings (car rest) drawing)))
          (loop (cdr rest)
                (if (and record (list? record))
                    (cons (wd-wirlay-row (car rest) record) rows)
                    rows))))))

;; The record holds (1 . colour) (2 . size) (3 . kind), the user values as group 4 in
;; order, (90 . row) and (290 . flag). Missing values are empty; a missing flag is a wire.
(define (wd-wirlay-row layer given)
  (let* ((record (if (list? given) given '()))
         (values (wd-wirlay-group-values 4 record)))
    (append (list layer
                  (wd-wirlay-text (assoc 1 record))
                  (wd-wirlay-text (assoc 2 record)))
            (wd-wirlay-twenty values)
            (list (let ((flag (assoc 290 record)))
                    (if (and flag (number? (cdr flag)) (= (cdr flag) 0)) "0" "1"))))))

(define (wd-wirlay-text pair)
  (if (and (pair? pair) (string? (cdr pair))) (cdr pair) ""))

;; A list that comes round again would be walked for ever: it holds no values.
(define (wd-wirlay-group-values code record)
  (let loop ((rest (if (list? record) record '())) (found '()))
    (cond ((null rest) (reverse found))
          ((and (pair? (car rest)) (equal (car (car rest)) code))
           (loop (cdr rest) (cons (wd-wirlay-text (car rest)) found)))
          (T (loop (cdr rest) found)))))

(define (wd-wirlay-twenty values)
  (let loop ((i 0) (rest (if (list? values) values '())) (out '()))
    (if (= i 20)
        (reverse out)
        (loop (+ i 1)
              (if (null rest) rest (cdr rest))
              (cons (if (null rest) "" (car rest)) out)))))

(vl-orvex-defun 'wd_wirlay_get_dwg_wiretype_settings)
